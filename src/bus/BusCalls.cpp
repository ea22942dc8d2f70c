// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusCalls.h"

#include "bus/BusError.h"
#include <core/tavo.h>

#include <memory>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Bus");

/// The slot deletes the handler when it ends.
void keep(std::unique_ptr<BusCalls::Handler> handler, sd_bus_slot *slot)
{
    const auto forget = [](void *data) { delete static_cast<BusCalls::Handler *>(data); };
    sd_bus_slot_set_destroy_callback(slot, forget);
    static_cast<void>(handler.release());
}

// Called by sd-bus, which is C: nothing may be thrown.

void handle(sd_bus_message *message, void *handler, const char *what)
{
    try {
        (*static_cast<BusCalls::Handler *>(handler))(BusMessage(message));
    } catch (const BusError &) {
        // The message is malformed.
    } catch (...) {
        LOG4CPLUS_WARN(logger, what << " can't be handled: " << BusError::fromCaught().message());
    }
}

int on_signal(sd_bus_message *message, void *handler, sd_bus_error * /*error*/)
{
    handle(message, handler, "A signal");
    return 0;
}

int on_reply(sd_bus_message *message, void *handler, sd_bus_error * /*error*/)
{
    // When the connection ends, sd-bus fails its calls. Callers learn of the loss from the connection.
    if (sd_bus_is_open(sd_bus_message_get_bus(message)) > 0) {
        handle(message, handler, "An answer");
    }
    return 0;
}

int on_message(sd_bus_message *message, void *handler, sd_bus_error *error)
{
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) {
        return 0;
    }
    try {
        (*static_cast<BusCalls::Handler *>(handler))(BusMessage(message));
        return 1;
    } catch (...) {
        return BusError::replyWithCaught(error);
    }
}
} // namespace

BusSlot BusCalls::handleCalls(sd_bus *bus, const Handler &handler)
{
    auto kept = std::make_unique<Handler>(handler);
    sd_bus_slot *slot = nullptr;
    BusError::check(sd_bus_add_filter(bus, &slot, on_message, kept.get()),
                    "Calls can't be handled");
    keep(std::move(kept), slot);
    return BusSlot(slot);
}

BusSlot BusCalls::addMatch(sd_bus *bus, const std::string &rule, const Handler &handler)
{
    auto kept = std::make_unique<Handler>(handler);
    sd_bus_slot *slot = nullptr;
    BusError::check(
        sd_bus_add_match_async(bus, &slot, rule.c_str(), on_signal, nullptr, kept.get()),
        "Signals can't be asked for");
    keep(std::move(kept), slot);
    return BusSlot(slot);
}

BusMessage BusCalls::create(sd_bus *bus, const char *service, const char *path,
                            const char *interface, const char *method)
{
    sd_bus_message *call = nullptr;
    BusError::check(sd_bus_message_new_method_call(bus, &call, service, path, interface, method),
                    "A call can't be made");
    return BusMessage::adopt(call);
}

void BusCalls::send(sd_bus *bus, const BusMessage &call, std::chrono::microseconds timeout,
                    const Handler &handler)
{
    auto kept = std::make_unique<Handler>(handler);
    sd_bus_slot *slot = nullptr;
    BusError::check(sd_bus_call_async(bus, &slot, call.get(), on_reply, kept.get(),
                                      std::uint64_t(timeout.count())),
                    "The call can't be sent");
    keep(std::move(kept), slot);
    // The bus keeps the slot until the reply.
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
}
