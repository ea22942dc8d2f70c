// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/SimplePlayerLimits.h"

namespace {
SimplePlayerLimits s_defaults;
} // namespace

SimplePlayerLimits SimplePlayerLimits::defaults()
{
    return s_defaults;
}

void SimplePlayerLimits::setDefaults(const SimplePlayerLimits &limits)
{
    s_defaults = limits;
}
