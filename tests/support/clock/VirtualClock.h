// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>

/// Holds the process's monotonic clock, on which timers and elapsed times run: while one of these
/// lives, time passes only by advance(). The time of day goes on.
///
/// Works by standing in for the C library's clock_gettime(), so it needs an event loop that asks
/// that one: Qt's own, not GLib's (QT_NO_GLIB=1). One at a time; what waits in another thread with a
/// limit waits on the real clock.
class VirtualClock
{
public:
    VirtualClock(); ///< goes on from the real time, at a whole millisecond
    ~VirtualClock();

    VirtualClock(const VirtualClock &) = delete;
    VirtualClock &operator=(const VirtualClock &) = delete;

    /// Lets the time pass, and nothing happen yet.
    void advance(std::chrono::nanoseconds time);

    /// Lets the time pass and the timers of the calling thread fire whose time has come, with all
    /// that is posted. A timer that is started by another one counts from the new time.
    void pass(std::chrono::nanoseconds time);

    std::chrono::nanoseconds now() const;
};
