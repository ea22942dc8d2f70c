// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sdbus-c++/sdbus-c++.h>
#include <systemd/sd-bus.h>

#include <memory>

/// The message below, for what the C++ one has no call for: bytes in one piece instead of one by
/// one, and steps over what nobody reads. Belongs to the given message.
inline sd_bus_message *rawMessage(const sdbus::Message &message)
{
    struct Opened : sdbus::Message
    {
        static void *of(const sdbus::Message &closed) { return closed.*(&Opened::msg_); }
    };
    return static_cast<sd_bus_message *>(Opened::of(message));
}

/// What C++ messages call sd-bus by, whichever bus they belong to.
sdbus::internal::ISdBus *messageCaller();

/// A message of sd-bus's as a C++ one of the kind, which keeps it.
template <typename Kind>
Kind messageOf(sd_bus_message *raw)
{
    struct Made : Kind
    {
        explicit Made(sd_bus_message *message)
            : Kind(message, messageCaller())
        {
        }
    };
    return Made(raw);
}

/// The same of one that is given away.
template <typename Kind>
Kind takeMessage(sd_bus_message *raw)
{
    const std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)> taken(
        raw, sd_bus_message_unref);
    return messageOf<Kind>(raw);
}
