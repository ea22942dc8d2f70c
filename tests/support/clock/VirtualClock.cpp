// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/clock/VirtualClock.h"

#include "support/Sanitized.h"

#include <QAbstractEventDispatcher>
#include <QEventLoop>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace {
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

std::atomic<bool> held{false};
std::atomic<std::int64_t> heldTime{0};

int realTime(clockid_t clock, timespec *time)
{
    return int(::syscall(SYS_clock_gettime, clock, time));
}

bool isMonotonic(clockid_t clock)
{
    return clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_RAW ||
           clock == CLOCK_MONOTONIC_COARSE || clock == CLOCK_BOOTTIME;
}
} // namespace

// The definition in a program takes precedence over that of the C library, also for libraries.
extern "C" __attribute__((visibility("default"))) TAVO_NO_SANITIZER int
clock_gettime(clockid_t clock, timespec *time) noexcept
{
    if (!held || !isMonotonic(clock)) {
        return realTime(clock, time);
    }
    const std::int64_t now = heldTime;
    time->tv_sec = time_t(now / nanosecondsPerSecond);
    time->tv_nsec = long(now % nanosecondsPerSecond);
    return 0;
}

VirtualClock::VirtualClock()
{
    timespec time{};
    realTime(CLOCK_MONOTONIC, &time);
    // The next whole millisecond, so that timers have whole milliseconds left.
    constexpr std::int64_t millisecond = 1'000'000;
    const std::int64_t now = time.tv_sec * nanosecondsPerSecond + time.tv_nsec;
    heldTime = (now + millisecond - 1) / millisecond * millisecond;
    held = true;
}

VirtualClock::~VirtualClock()
{
    held = false;
}

void VirtualClock::advance(std::chrono::nanoseconds time)
{
    heldTime += time.count();
}

void VirtualClock::pass(std::chrono::nanoseconds time)
{
    advance(time);
    QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents);
}

std::chrono::nanoseconds VirtualClock::now() const
{
    return std::chrono::nanoseconds(heldTime.load());
}
