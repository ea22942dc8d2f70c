// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusHandles.h"

#include <functional>

#include <systemd/sd-bus.h>

/// Sees every call that comes in before anything answers it, those too that the connection answers
/// itself: introspection, properties, whatever there is not.
///
/// Thread and owner: its worker's. Goes before its connection does.
class CallFilter
{
public:
    /// True lets the call pass. False when it has been answered, or is to get no answer. Throws
    /// nothing but an sdbus::Error, which is sent as the answer.
    using Pass = std::function<bool(sd_bus_message *call)>;

    CallFilter(sd_bus *bus, Pass pass);
    CallFilter(const CallFilter &) = delete;
    CallFilter &operator=(const CallFilter &) = delete;

private:
    static int on_message(sd_bus_message *message, void *filter, sd_bus_error *error);

    const Pass m_pass;
    BusSlot m_slot;
};
