// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include <systemd/sd-bus.h>

/// Closes without waiting for the bus: what it has not taken by then is not sent.
struct BusCloser
{
    void operator()(sd_bus *bus) const { sd_bus_close_unref(bus); }
};

/// Ends what is registered.
struct BusSlotEnder
{
    void operator()(sd_bus_slot *slot) const { sd_bus_slot_unref(slot); }
};

using BusHandle = std::unique_ptr<sd_bus, BusCloser>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusSlotEnder>;
