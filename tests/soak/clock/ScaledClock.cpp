// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Preloaded into a program, makes its monotonic clock run SOAK_CLOCK_FACTOR times as fast: times
// that the program reads are scaled up, timeouts are scaled down. The time of day stays.
//
// Covers the functions that Qt, the C++ library, ALSA and this project wait with. Relative timeouts
// are taken as monotonic, as in the kernel.

#include <climits>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::int64_t nsPerSecond = 1'000'000'000;
constexpr std::int64_t nsPerMs = 1'000'000;

std::int64_t toNs(const timespec &time)
{
    return time.tv_sec * nsPerSecond + time.tv_nsec;
}

timespec toTimespec(std::int64_t ns)
{
    return {ns / nsPerSecond, ns % nsPerSecond};
}

std::int64_t realNow(clockid_t clock)
{
    timespec now{};
    syscall(SYS_clock_gettime, clock, &now);
    return toNs(now);
}

struct Scale
{
    Scale()
        : origin(realNow(CLOCK_MONOTONIC))
    {
        const char *text = std::getenv("SOAK_CLOCK_FACTOR");
        const long value = text != nullptr ? std::strtol(text, nullptr, 10) : 1;
        factor = value >= 1 ? value : 1;
    }

    std::int64_t scaled(std::int64_t real) const { return origin + (real - origin) * factor; }
    std::int64_t real(std::int64_t scaled) const
    {
        // Rounded up, since a wait must not end early.
        return origin + (scaled - origin + factor - 1) / factor;
    }
    timespec realSpan(std::int64_t scaledSpan) const
    {
        return toTimespec((scaledSpan + factor - 1) / factor);
    }

    std::int64_t origin;
    std::int64_t factor = 1;
};

// Read on first use, which may be before any constructor of this library.
const Scale &scale()
{
    static const Scale instance;
    return instance;
}

bool isMonotonic(clockid_t clock)
{
    return clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_COARSE ||
           clock == CLOCK_MONOTONIC_RAW || clock == CLOCK_BOOTTIME;
}

template <typename Function>
Function next(const char *name, const char *version = nullptr)
{
    void *found = version != nullptr ? dlvsym(RTLD_NEXT, name, version) : dlsym(RTLD_NEXT, name);
    return reinterpret_cast<Function>(found);
}

int pollFor(pollfd *descriptors, nfds_t count, const timespec *span, const sigset_t *mask)
{
    using Ppoll = int (*)(pollfd *, nfds_t, const timespec *, const sigset_t *);
    static const auto real = next<Ppoll>("ppoll");
    if (span == nullptr) {
        return real(descriptors, count, nullptr, mask);
    }
    const timespec scaled = scale().realSpan(toNs(*span));
    return real(descriptors, count, &scaled, mask);
}

// The clock of a condition variable is unknown here, but the times of the two clocks are decades
// apart.
bool isNearMonotonic(std::int64_t deadline)
{
    const std::int64_t toMonotonic = deadline - scale().scaled(realNow(CLOCK_MONOTONIC));
    const std::int64_t toRealtime = deadline - realNow(CLOCK_REALTIME);
    return std::llabs(toMonotonic) < std::llabs(toRealtime);
}

} // namespace

#define SOAK_EXPORT extern "C" __attribute__((visibility("default")))

SOAK_EXPORT int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    if (!isMonotonic(clock)) {
        using ClockGettime = int (*)(clockid_t, timespec *);
        static const auto real = next<ClockGettime>("clock_gettime");
        return real(clock, time);
    }
    *time = toTimespec(scale().scaled(realNow(CLOCK_MONOTONIC)));
    return 0;
}

SOAK_EXPORT int poll(pollfd *descriptors, nfds_t count, int timeoutMs)
{
    const timespec span = toTimespec(std::int64_t(timeoutMs) * nsPerMs);
    return pollFor(descriptors, count, timeoutMs < 0 ? nullptr : &span, nullptr);
}

SOAK_EXPORT int ppoll(pollfd *descriptors, nfds_t count, const timespec *span, const sigset_t *mask)
{
    return pollFor(descriptors, count, span, mask);
}

SOAK_EXPORT int clock_nanosleep(clockid_t clock, int flags, const timespec *span, timespec *rest)
{
    using ClockNanosleep = int (*)(clockid_t, int, const timespec *, timespec *);
    static const auto real = next<ClockNanosleep>("clock_nanosleep");
    if ((flags & TIMER_ABSTIME) == 0) {
        const timespec scaled = scale().realSpan(toNs(*span));
        return real(clock, flags, &scaled, rest);
    }
    if (!isMonotonic(clock)) {
        return real(clock, flags, span, rest);
    }
    const timespec deadline = toTimespec(scale().real(toNs(*span)));
    return real(clock, flags, &deadline, rest);
}

SOAK_EXPORT int nanosleep(const timespec *span, timespec *rest)
{
    const int error = clock_nanosleep(CLOCK_MONOTONIC, 0, span, rest);
    if (error != 0) {
        errno = error;
    }
    return error == 0 ? 0 : -1;
}

SOAK_EXPORT int pthread_cond_clockwait(pthread_cond_t *condition, pthread_mutex_t *mutex,
                                       clockid_t clock, const timespec *deadline)
{
    using Clockwait = int (*)(pthread_cond_t *, pthread_mutex_t *, clockid_t, const timespec *);
    static const auto real = next<Clockwait>("pthread_cond_clockwait");
    if (!isMonotonic(clock)) {
        return real(condition, mutex, clock, deadline);
    }
    const timespec scaled = toTimespec(scale().real(toNs(*deadline)));
    return real(condition, mutex, clock, &scaled);
}

SOAK_EXPORT int pthread_cond_timedwait(pthread_cond_t *condition, pthread_mutex_t *mutex,
                                       const timespec *deadline)
{
    using Timedwait = int (*)(pthread_cond_t *, pthread_mutex_t *, const timespec *);
    // Without the version, this finds the function of before 2.3.2, for other condition
    // variables.
    static const auto versioned = next<Timedwait>("pthread_cond_timedwait", "GLIBC_2.3.2");
    static const auto real =
        versioned != nullptr ? versioned : next<Timedwait>("pthread_cond_timedwait");
    if (!isNearMonotonic(toNs(*deadline))) {
        return real(condition, mutex, deadline);
    }
    const timespec scaled = toTimespec(scale().real(toNs(*deadline)));
    return real(condition, mutex, &scaled);
}
