// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AlarmClock.h"

#include <core/base/connect.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <limits>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>

namespace {
constexpr qint64 msOfSecond = 1000;
constexpr qint64 nsOfMs = 1000000;

int openTimer()
{
    const int descriptor = timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "timerfd_create");
    }
    return descriptor;
}
} // namespace

AlarmClock::AlarmClock(QObject *parent)
    : QObject(parent)
    , m_descriptor(openTimer())
    , m_notifier(m_descriptor, QSocketNotifier::Read)
{
    tavoConnect(&m_notifier, &QSocketNotifier::activated, this, &AlarmClock::on_notifier_activated);
}

AlarmClock::~AlarmClock()
{
    m_notifier.setEnabled(false);
    ::close(m_descriptor);
}

qint64 AlarmClock::now()
{
    using std::chrono::milliseconds;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<milliseconds>(now).count();
}

void AlarmClock::set(std::optional<qint64> time)
{
    // A timer that is armed tells changes of the clock, too. Zero would disarm it. 32-bit processors count seconds
    // up to 2038.
    constexpr qint64 farSeconds = qint64(std::numeric_limits<qint32>::max()) * 8;
    constexpr qint64 never =
        std::min<qint64>(farSeconds, std::numeric_limits<time_t>::max()) * msOfSecond;
    const qint64 moment = std::clamp<qint64>(time.value_or(never), 1, never);
    itimerspec timer{};
    timer.it_value.tv_sec = moment / msOfSecond;
    timer.it_value.tv_nsec = moment % msOfSecond * nsOfMs;
    if (timerfd_settime(m_descriptor, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &timer,
                        nullptr) != 0 &&
        errno != ECANCELED) {
        throw std::system_error(errno, std::generic_category(), "timerfd_settime");
    }
}

void AlarmClock::on_notifier_activated()
{
    quint64 count = 0;
    // The error is ECANCELED if the clock has been set. Either way, it is time to look.
    [[maybe_unused]] const auto size = ::read(m_descriptor, &count, sizeof count);
    set(std::nullopt);
    Q_EMIT rang();
}
