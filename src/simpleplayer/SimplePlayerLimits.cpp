// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/SimplePlayerLimits.h"

#include <mutex>

namespace {
std::mutex s_mutex;
SimplePlayerLimits s_defaults; // protected by the mutex
} // namespace

SimplePlayerLimits SimplePlayerLimits::defaults()
{
    const std::lock_guard lock(s_mutex);
    return s_defaults;
}

void SimplePlayerLimits::setDefaults(const SimplePlayerLimits &limits)
{
    const std::lock_guard lock(s_mutex);
    s_defaults = limits;
}
