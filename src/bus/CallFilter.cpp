// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/CallFilter.h"

#include "bus/BusError.h"

CallFilter::CallFilter(sd_bus *bus, Pass pass)
    : m_pass(std::move(pass))
{
    sd_bus_slot *slot = nullptr;
    BusError::check(sd_bus_add_filter(bus, &slot, &CallFilter::on_message, this),
                    "Calls can't be filtered");
    m_slot.reset(slot);
}

int CallFilter::on_message(sd_bus_message *message, void *filter, sd_bus_error *error)
{
    constexpr int continues = 0;
    constexpr int ends = 1;
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) {
        return continues;
    }
    try {
        const bool passes = static_cast<CallFilter *>(filter)->m_pass(BusMessage(message));
        return passes ? continues : ends;
    } catch (...) {
        return BusError::replyWithCaught(error);
    }
}
