// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sdbus-c++/sdbus-c++.h>
#include <systemd/sd-bus.h>

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
