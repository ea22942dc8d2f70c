// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <systemd/sd-bus.h>

#include <memory>

/// Closes without waiting: messages that the bus has not taken yet are not sent.
struct BusCloser
{
    void operator()(sd_bus *bus) const { sd_bus_close_unref(bus); }
};

/// Ends what was registered: a match, an object or a filter.
struct BusSlotEnder
{
    void operator()(sd_bus_slot *slot) const { sd_bus_slot_unref(slot); }
};

using BusHandle = std::unique_ptr<sd_bus, BusCloser>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusSlotEnder>;
