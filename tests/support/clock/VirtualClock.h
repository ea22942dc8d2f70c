// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>

/// Stops the monotonic clock of the process, on which timers and elapsed times run. While the
/// object exists, only advance() lets time pass. The time of day goes on.
///
/// Replaces the C library's clock_gettime(), so it needs an event loop that uses that function:
/// Qt's own, not GLib's (QT_NO_GLIB=1). Only one at a time. Timed waits in other threads use the
/// real clock.
class VirtualClock
{
public:
    VirtualClock(); ///< starts at the real time, at a whole millisecond
    ~VirtualClock();

    VirtualClock(const VirtualClock &) = delete;
    VirtualClock &operator=(const VirtualClock &) = delete;

    /// Lets the time pass without handling events.
    void advance(std::chrono::nanoseconds time);

    /// Lets the time pass, fires the due timers of the calling thread and delivers posted
    /// events. A timer that another timer starts counts from the new time.
    void pass(std::chrono::nanoseconds time);

    std::chrono::nanoseconds now() const;
};
