// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusCalls.h"

#include "bus/BusError.h"
#include "bus/RawMessage.h"

#include <core/tavo.h>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Bus");

/// Has the handler, which is the slot's data, go with the slot.
template <typename Handler>
void keep(std::unique_ptr<Handler> handler, sd_bus_slot *slot)
{
    const auto forget = [](void *data) { delete static_cast<Handler *>(data); };
    sd_bus_slot_set_destroy_callback(slot, forget);
    static_cast<void>(handler.release());
}

// Nothing may be thrown through the C functions that call these.

int takeSignal(sd_bus_message *message, void *handler, sd_bus_error * /*error*/)
{
    try {
        auto signal = messageOf<sdbus::Signal>(message);
        (*static_cast<BusCalls::SignalHandler *>(handler))(signal);
    } catch (const sdbus::Error &) {
        // Of another shape than its name says.
    } catch (const std::exception &error) {
        LOG4CPLUS_WARN(logger, "A signal can't be handled: " << error.what());
    }
    return 0;
}

int takeAnswer(sd_bus_message *message, void *handler, sd_bus_error * /*error*/)
{
    // With the connection all its calls end, which who has them learns from its loss.
    if (sd_bus_is_open(sd_bus_message_get_bus(message)) <= 0) {
        return 0;
    }
    auto answer = messageOf<sdbus::MethodReply>(message);
    const auto &take = *static_cast<BusCalls::AnswerHandler *>(handler);
    const sd_bus_error *raw = sd_bus_message_get_error(message);
    try {
        if (raw == nullptr) {
            take(answer, nullptr);
        } else {
            const sdbus::Error error(raw->name, raw->message != nullptr ? raw->message : "");
            take(answer, &error);
        }
    } catch (const sdbus::Error &) {
        // Of another shape than the call's answers have.
    } catch (const std::exception &failure) {
        LOG4CPLUS_WARN(logger, "An answer can't be handled: " << failure.what());
    }
    return 0;
}
} // namespace

BusSlot BusCalls::addMatch(sd_bus *bus, const std::string &rule, const SignalHandler &handler)
{
    auto kept = std::make_unique<SignalHandler>(handler);
    sd_bus_slot *slot = nullptr;
    BusErrors::check(
        sd_bus_add_match_async(bus, &slot, rule.c_str(), takeSignal, nullptr, kept.get()),
        "Signals can't be asked for");
    keep(std::move(kept), slot);
    return BusSlot(slot);
}

sdbus::MethodCall BusCalls::create(sd_bus *bus, const char *service, const char *path,
                                   const char *interface, const char *method)
{
    sd_bus_message *raw = nullptr;
    BusErrors::check(sd_bus_message_new_method_call(bus, &raw, service, path, interface, method),
                     "A call can't be made");
    return takeMessage<sdbus::MethodCall>(raw);
}

void BusCalls::send(sd_bus *bus, const sdbus::MethodCall &call, std::chrono::microseconds patience,
                    const AnswerHandler &handler)
{
    auto kept = std::make_unique<AnswerHandler>(handler);
    sd_bus_slot *slot = nullptr;
    BusErrors::check(sd_bus_call_async(bus, &slot, rawMessage(call), takeAnswer, kept.get(),
                                       std::uint64_t(patience.count())),
                     "The call can't be sent");
    keep(std::move(kept), slot);
    // It stays until the answer, or the connection's end.
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
}
