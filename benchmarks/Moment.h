// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <time.h>

/// The current time in nanoseconds of CLOCK_MONOTONIC, which all processes share.
inline std::int64_t momentNow()
{
    constexpr std::int64_t nsPerSecond = 1'000'000'000;
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t(time.tv_sec) * nsPerSecond + time.tv_nsec;
}
