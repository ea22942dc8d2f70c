// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusHandles.h"
#include "bus/BusMessage.h"

#include <functional>

/// Sees every incoming call before anything replies to it, including calls that sd-bus would reply to
/// itself: introspection, properties and unknown methods.
///
/// Owned by the worker, called in its thread. Destroyed before its connection.
class CallFilter
{
public:
    /// True lets the call pass. False stops it: the filter has replied, or nothing will. An exception is
    /// sent as the error reply.
    using Pass = std::function<bool(const BusMessage &call)>;

    CallFilter(sd_bus *bus, Pass pass);
    CallFilter(const CallFilter &) = delete;
    CallFilter &operator=(const CallFilter &) = delete;

private:
    static int on_message(sd_bus_message *message, void *filter, sd_bus_error *error);

    const Pass m_pass;
    BusSlot m_slot;
};
