// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/SimplePlayerLimits.h"

#include <mutex>

namespace {

std::mutex &limitsMutex()
{
    static std::mutex mutex;
    return mutex;
}

SimplePlayerLimits &limits()
{
    static SimplePlayerLimits limits;
    return limits;
}

} // namespace

SimplePlayerLimits SimplePlayerLimits::current()
{
    const std::lock_guard lock(limitsMutex());
    return limits();
}

void SimplePlayerLimits::setCurrent(const SimplePlayerLimits &newLimits)
{
    const std::lock_guard lock(limitsMutex());
    limits() = newLimits;
}
