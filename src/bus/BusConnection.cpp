// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusConnection.h"

#include <core/tavo/connect.h>

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>

#include <algorithm>
#include <limits>
#include <poll.h>
#include <systemd/sd-bus.h>

namespace {
constexpr int firstPauseMs = 100;
constexpr int longestPauseMs = 5000;

/// What one turn of the event loop spends on messages at most; the rest waits for the next turn, so
/// that a flood leaves the thread's other work its share.
constexpr int mostMessagesPerTurn = 128;
constexpr int longestTurnMs = 5;

constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

constexpr const char *busName = "org.freedesktop.DBus";
constexpr const char *busPath = "/org/freedesktop/DBus";

/// What the bus answers to a request for a name.
constexpr std::uint32_t nameIsOurs = 1;
constexpr std::uint32_t nameWasOurs = 4;

/// The call for an address, unlike the others, loses memory each time that nobody is there.
void throwUnlessReachable(const std::string &address)
{
    sd_bus *bus = nullptr;
    int result = sd_bus_new(&bus);
    if (result >= 0) {
        result = sd_bus_set_address(bus, address.c_str());
    }
    if (result >= 0) {
        result = sd_bus_start(bus);
    }
    sd_bus_close_unref(bus);
    if (result < 0) {
        throw sdbus::createError(-result, "Failed to reach " + address);
    }
}

std::unique_ptr<sdbus::IConnection> connectTo(const QString &bus)
{
    if (bus == QLatin1String("session")) {
        return sdbus::createSessionBusConnection();
    }
    if (bus == QLatin1String("system")) {
        return sdbus::createSystemBusConnection();
    }
    const std::string address = bus.toStdString();
    throwUnlessReachable(address);
    return sdbus::createSessionBusConnectionWithAddress(address);
}
} // namespace

BusConnection::BusConnection(QString bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
    , m_timer(this)
    , m_deadline(never)
    , m_retryTimer(this)
    , m_pauseMs(firstPauseMs)
{
    m_timer.setSingleShot(true);
    m_retryTimer.setSingleShot(true);
    tavoConnect(&m_timer, &QTimer::timeout, this, &BusConnection::on_timer_timeout);
    tavoConnect(&m_retryTimer, &QTimer::timeout, this, &BusConnection::on_retryTimer_timeout);
}

BusConnection::~BusConnection() = default;

void BusConnection::open()
{
    // Messages are sent outside of process() too, and what the socket doesn't take at once has to
    // be watched before the loop sleeps.
    tavoConnect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
                &BusConnection::on_dispatcher_aboutToBlock);
    tryToConnect();
}

void BusConnection::ownName(const QString &name)
{
    m_names.append(name);
}

void BusConnection::tryToConnect()
{
    try {
        m_connection = connectTo(m_bus);
        m_nameAcquired = m_connection->addMatch(
            "type='signal',sender='org.freedesktop.DBus',member='NameAcquired'",
            [this](sdbus::Message &message) { on_name_acquired(message); });
        m_pauseMs = firstPauseMs;
        m_reportedLoss = false;
        watch();
        Q_EMIT connected();
        takeNames();
    } catch (const sdbus::Error &error) {
        lose(QString::fromStdString(error.getMessage()));
    }
}

void BusConnection::lose(const QString &reason)
{
    unwatch();
    if (!m_reportedLoss) {
        m_reportedLoss = true;
        Q_EMIT lost(reason);
    }
    m_nameAcquired.reset();
    m_connection.reset();
    m_retryTimer.start(m_pauseMs);
    m_pauseMs = std::min(2 * m_pauseMs, longestPauseMs);
}

void BusConnection::on_retryTimer_timeout()
{
    tryToConnect();
}

void BusConnection::takeNames()
{
    for (const QString &name : qAsConst(m_names)) {
        takeName(name);
    }
}

void BusConnection::takeName(const QString &name)
{
    try {
        const std::uint32_t outcome = requestName(name);
        // Acquired is reported by the bus's signal, whether at once or later.
        if (outcome != nameIsOurs && outcome != nameWasOurs) {
            Q_EMIT nameTaken(name);
        }
    } catch (const sdbus::Error &error) {
        Q_EMIT nameRefused(name, QString::fromStdString(error.getMessage()));
    }
}

std::uint32_t BusConnection::requestName(const QString &name)
{
    const auto bus = sdbus::createProxy(*m_connection, busName, busPath);
    sdbus::MethodCall call = bus->createMethodCall(busName, "RequestName");
    constexpr std::uint32_t standInLine = 0;
    call << name.toStdString() << standInLine;
    sdbus::MethodReply reply = bus->callMethod(call);
    std::uint32_t outcome = 0;
    reply >> outcome;
    return outcome;
}

bool BusConnection::isFromBus(const sdbus::Message &signal)
{
    return signal.getSender() == busName;
}

void BusConnection::on_name_acquired(sdbus::Message &message)
{
    if (!isFromBus(message)) {
        return;
    }
    std::string name;
    message >> name;
    const QString acquired = QString::fromStdString(name);
    if (m_names.contains(acquired)) {
        Q_EMIT nameAcquired(acquired);
    }
}

void BusConnection::on_dispatcher_aboutToBlock()
{
    if (!isConnected()) {
        return;
    }
    try {
        watch();
    } catch (const sdbus::Error &error) {
        lose(QString::fromStdString(error.getMessage()));
    }
}

void BusConnection::on_notifier_activated()
{
    process();
}

void BusConnection::on_timer_timeout()
{
    m_deadline = never;
    process();
}

void BusConnection::process()
{
    QElapsedTimer turn;
    turn.start();
    try {
        for (int i = 0; i < mostMessagesPerTurn && !turn.hasExpired(longestTurnMs); ++i) {
            if (!m_connection->processPendingRequest()) {
                break;
            }
        }
        watch();
    } catch (const sdbus::Error &error) {
        lose(QString::fromStdString(error.getMessage()));
    }
}

void BusConnection::watch()
{
    const sdbus::IConnection::PollData poll = m_connection->getEventLoopPollData();
    if (!m_readable) {
        m_readable = std::make_unique<QSocketNotifier>(poll.fd, QSocketNotifier::Read);
        m_writable = std::make_unique<QSocketNotifier>(poll.fd, QSocketNotifier::Write);
        tavoConnect(m_readable.get(), &QSocketNotifier::activated, this,
                    &BusConnection::on_notifier_activated);
        tavoConnect(m_writable.get(), &QSocketNotifier::activated, this,
                    &BusConnection::on_notifier_activated);
    }
    m_readable->setEnabled((poll.events & POLLIN) != 0);
    m_writable->setEnabled((poll.events & POLLOUT) != 0);
    if (poll.timeout_usec == m_deadline) {
        return;
    }
    m_deadline = poll.timeout_usec;
    if (m_deadline == never) {
        m_timer.stop();
    } else {
        m_timer.start(poll.getPollTimeout());
    }
}

void BusConnection::unwatch()
{
    m_readable.reset();
    m_writable.reset();
    m_timer.stop();
    m_deadline = never;
}
