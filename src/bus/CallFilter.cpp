// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/CallFilter.h"

#include "bus/BusError.h"

#include <core/tavo.h>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");
} // namespace

CallFilter::CallFilter(sd_bus *bus, Pass pass)
    : m_pass(std::move(pass))
{
    sd_bus_slot *slot = nullptr;
    BusErrors::check(sd_bus_add_filter(bus, &slot, &CallFilter::on_message, this),
                     "Calls can't be filtered");
    m_slot.reset(slot);
}

int CallFilter::on_message(sd_bus_message *message, void *filter, sd_bus_error * /*error*/)
{
    constexpr int goesOn = 0;
    constexpr int ends = 1;
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) {
        return goesOn;
    }
    // Nothing may be thrown through the C functions that called this one.
    try {
        return static_cast<CallFilter *>(filter)->m_pass(message) ? goesOn : ends;
    } catch (const sdbus::Error &refusal) {
        sd_bus_reply_method_errorf(message, refusal.getName().c_str(), "%s",
                                   refusal.getMessage().c_str());
    } catch (const std::exception &error) {
        LOG4CPLUS_WARN(logger, "A call can't be looked at: " << error.what());
    }
    return ends;
}
