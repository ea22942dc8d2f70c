// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Part of builds with ThreadSanitizer alone. The sanitizer puts off a signal's handler until a call
// that it watches returns. One that comes right before ppoll(), on which Qt's event loops wait,
// would be handled at the next event, which may be never. So the wait is cut into short ones; to an
// event loop that is a wake-up for nothing, which it has to bear in any case.

#include <algorithm>
#include <csignal>
#include <ctime>
#include <poll.h>

namespace {
constexpr int s_longestWait = 50;

int milliseconds(const timespec &time)
{
    constexpr int nanosecondsEach = 1000000;
    // Rounded up: a timer that is not due yet would make the event loop spin.
    return static_cast<int>(time.tv_sec * 1000 +
                            (time.tv_nsec + nanosecondsEach - 1) / nanosecondsEach);
}
} // namespace

/// What Qt needs of it: it never asks for a signal mask.
extern "C" int ppoll(pollfd *descriptors, nfds_t count, const timespec *timeout,
                     const sigset_t * /*mask*/)
{
    const int wanted = timeout != nullptr ? milliseconds(*timeout) : s_longestWait;
    return poll(descriptors, count, std::min(wanted, s_longestWait));
}
