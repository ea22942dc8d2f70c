// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <ctime>
#include <limits>

/// The milliseconds that a function takes.
template <typename Function>
qint64 timeOf(Function function)
{
    QElapsedTimer elapsed;
    elapsed.start();
    function();
    return elapsed.elapsed();
}

/// The processor time in nanoseconds that a function takes on its thread: the minimum of several
/// runs, which depends least on what else the machine does.
template <typename Function>
qint64 processorTimeOf(Function function)
{
    constexpr int runs = 5;
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
    };
    qint64 least = std::numeric_limits<qint64>::max();
    for (int run = 0; run < runs; ++run) {
        const qint64 start = now();
        function();
        least = std::min(least, now() - start);
    }
    return least;
}
