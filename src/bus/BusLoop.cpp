// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusLoop.h"

#include <core/base/connect.h>

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>

#include <algorithm>
#include <chrono>
#include <limits>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <utility>

namespace {
/// Limits of one turn of the event loop. Further messages wait for the next turn, so that a flood
/// leaves time for the thread's other work.
constexpr int maxMessagesPerTurn = 1024;
constexpr int maxTurnMs = 5;

constexpr int lagMs = 1000;

/// How much the bus may have yet to read before the connection counts as congested. The system counts some
/// 800 bytes for a small message, so these are about ten; dbus-daemon reads them in one turn. The system
/// doubles the size of the socket, and reports that it can be written when a quarter is left.
constexpr int maxUnread = BusLoop::socketBytes / 2;

constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

/// The time until a point of the monotonic clock, rounded up.
std::chrono::milliseconds timeUntil(std::uint64_t deadline)
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto left = std::chrono::microseconds(deadline) - now;
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(left),
                    std::chrono::milliseconds::zero());
}
} // namespace

BusLoop::BusLoop(QObject *parent)
    : QObject(parent)
    , m_lagTimer(this)
    , m_timer(this)
    , m_deadline(never)
{
    m_lagTimer.setInterval(lagMs);
    m_timer.setSingleShot(true);
    tavoConnect(&m_lagTimer, &QTimer::timeout, this, &BusLoop::on_lagTimer_timeout);
    tavoConnect(&m_timer, &QTimer::timeout, this, &BusLoop::on_timer_timeout);
}

void BusLoop::start(sd_bus *bus)
{
    if (!m_isHooked) {
        m_isHooked = true;
        // Messages are sent outside of turns too. When the socket doesn't take them at once, the loop
        // must watch it before it sleeps.
        tavoConnect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                    this, &BusLoop::on_dispatcher_aboutToBlock);
    }
    m_bus = bus;
    m_isCongested = false;
    // The bus is served even when the event loop never sleeps.
    m_timer.start(0);
}

void BusLoop::stop()
{
    m_bus = nullptr;
    m_readable.reset();
    m_writable.reset();
    m_lagTimer.stop();
    m_unread = 0;
    m_timer.stop();
    m_deadline = never;
}

std::unique_ptr<QSocketNotifier> BusLoop::notifier(int descriptor, QSocketNotifier::Type type,
                                                   BusLoop *loop)
{
    auto result = std::make_unique<QSocketNotifier>(descriptor, type);
    tavoConnect(result.get(), &QSocketNotifier::activated, loop, &BusLoop::on_notifier_activated);
    return result;
}

void BusLoop::on_dispatcher_aboutToBlock()
{
    if (m_bus == nullptr || m_isHandling) {
        return;
    }
    const int result = watch();
    if (result < 0) {
        Q_EMIT failed(-result);
    } else if (!m_lagTimer.isActive()) {
        countUnread();
    }
}

void BusLoop::on_notifier_activated()
{
    serve();
}

void BusLoop::on_lagTimer_timeout()
{
    if (countUnread() > 0) {
        Q_EMIT lagging(++m_secondsStuck);
    } else {
        m_lagTimer.stop();
        Q_EMIT lagging(0);
    }
}

/// Returns how much the bus has yet to read. It decreases only when the bus reads, so it must be counted
/// before more is sent: a slow bus may never read everything.
int BusLoop::countUnread()
{
    int unread = 0;
    if (m_bus == nullptr || ::ioctl(sd_bus_get_fd(m_bus), SIOCOUTQ, &unread) < 0) {
        unread = 0;
    }
    if (unread < std::exchange(m_unread, unread)) {
        m_secondsStuck = 0;
    }
    if (unread > 0 && !m_lagTimer.isActive()) {
        m_secondsStuck = 0;
        m_lagTimer.start();
    }
    return unread;
}

bool BusLoop::isFull() const
{
    std::uint64_t waiting = 0;
    return m_bus != nullptr && sd_bus_get_n_queued_write(m_bus, &waiting) >= 0 && waiting > 0;
}

bool BusLoop::isReadable() const
{
    std::uint64_t waiting = 0;
    if (m_bus == nullptr || sd_bus_get_n_queued_read(m_bus, &waiting) < 0) {
        return false;
    }
    pollfd descriptor{sd_bus_get_fd(m_bus), POLLIN, 0};
    return waiting > 0 || ::poll(&descriptor, 1, 0) > 0;
}

bool BusLoop::isCongested()
{
    m_isCongested = countUnread() > maxUnread || isFull();
    return m_isCongested;
}

void BusLoop::on_timer_timeout()
{
    m_deadline = never;
    serve();
}

void BusLoop::serve()
{
    if (m_isHandling) {
        // A handler runs an event loop of its own. sd-bus can't be called recursively, so the outer
        // turn resumes watching.
        m_readable->setEnabled(false);
        m_writable->setEnabled(false);
        return;
    }
    m_isHandling = true;
    m_isCongested = false;
    if (m_lagTimer.isActive()) {
        countUnread();
    }
    int result = handleMessages();
    m_isHandling = false;
    if (result >= 0) {
        result = watch();
    }
    if (result < 0) {
        Q_EMIT failed(-result);
    } else {
        Q_EMIT turned();
    }
}

int BusLoop::handleMessages()
{
    QElapsedTimer turn;
    turn.start();
    int result = 1;
    for (int i = 0; i < maxMessagesPerTurn && result > 0 && !turn.hasExpired(maxTurnMs); ++i) {
        result = sd_bus_process(m_bus, nullptr);
    }
    return result;
}

int BusLoop::watch()
{
    const int descriptor = sd_bus_get_fd(m_bus);
    const int events = sd_bus_get_events(m_bus);
    if (descriptor < 0 || events < 0) {
        return std::min(descriptor, events);
    }
    // The descriptor changes when the first of several addresses fails.
    if (!m_readable || m_readable->socket() != descriptor) {
        m_readable = notifier(descriptor, QSocketNotifier::Read, this);
        m_writable = notifier(descriptor, QSocketNotifier::Write, this);
    }
    m_readable->setEnabled((events & POLLIN) != 0);
    m_writable->setEnabled(m_isCongested || (events & POLLOUT) != 0);
    return watchTime();
}

int BusLoop::watchTime()
{
    std::uint64_t deadline = never;
    const int result = sd_bus_get_timeout(m_bus, &deadline);
    if (result < 0 || deadline == m_deadline) {
        return result;
    }
    m_deadline = deadline;
    if (deadline == never) {
        m_timer.stop();
    } else {
        m_timer.start(timeUntil(deadline));
    }
    return result;
}
