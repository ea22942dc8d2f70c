// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/StopSignals.h"

#include "host/ExitCode.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

// ThreadSanitizer comes between a signal and its handler: it keeps the signal until a call that it
// watches returns, and was seen to lose one in three hundred. In its builds the C library's own
// functions are used, and the handler is left as it is written.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TAVO_UNWATCHED __attribute__((disable_sanitizer_instrumentation))
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" int __sigaction(int signal, const struct sigaction *action, struct sigaction *old);
extern "C" ssize_t __write(int descriptor, const void *bytes, size_t size);
static constexpr auto s_setAction = __sigaction;
static constexpr auto s_write = __write;
// NOLINTEND(bugprone-reserved-identifier)
#endif
#endif
#ifndef TAVO_UNWATCHED
#define TAVO_UNWATCHED
static constexpr auto s_setAction = ::sigaction;
static constexpr auto s_write = ::write;
#endif

namespace {
std::atomic<int> s_firstSignal{0};
std::atomic<int> s_writeEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free, "used in a signal handler");

extern "C" TAVO_UNWATCHED void handleStopSignal(int signal)
{
    int none = 0;
    if (!s_firstSignal.compare_exchange_strong(none, signal)) {
        _exit(128 + signal);
    }
    const int savedErrno = errno;
    const char wakeUp = 0;
    // A pipe of its own that takes one byte in its life: it can't be full.
    if (s_write(s_writeEnd.load(), &wakeUp, 1) != 1) {
        _exit(static_cast<int>(ExitCode::SystemError));
    }
    errno = savedErrno;
}
} // namespace

std::unique_ptr<StopSignals> StopSignals::install(Callback onFirst)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return nullptr;
    }
    s_writeEnd = ends[1];
    std::unique_ptr<StopSignals> signals(new StopSignals(ends[0], std::move(onFirst)));

    struct sigaction action = {};
    action.sa_handler = handleStopSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    if (s_setAction(SIGINT, &action, nullptr) != 0 || s_setAction(SIGTERM, &action, nullptr) != 0) {
        return nullptr;
    }
    return signals;
}

StopSignals::StopSignals(int readEnd, Callback onFirst)
    : m_onFirst(std::move(onFirst))
    , m_notifier(readEnd, QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
                     [this] { on_notifier_activated(); });
}

bool StopSignals::received()
{
    return s_firstSignal.load() != 0;
}

void StopSignals::on_notifier_activated()
{
    m_notifier.setEnabled(false);
    m_onFirst(s_firstSignal.load());
}
