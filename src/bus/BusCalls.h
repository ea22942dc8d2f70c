// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusHandles.h"
#include "bus/BusMessage.h"

#include <chrono>
#include <functional>
#include <string>

/// Sends calls and receives signals. Nothing here waits: replies and signals go to handlers while the
/// bus is served. All functions throw a BusError when the connection fails.
namespace BusCalls {
/// Exceptions of a handler are logged as warnings, except BusError: the message was malformed.
using Handler = std::function<void(const BusMessage &message)>;

/// Handles the signals that match the rule until the slot ends. The bus applies the rule before it sees
/// anything that is sent later. A bus that refuses the rule ends the connection.
BusSlot addMatch(sd_bus *bus, const std::string &rule, const Handler &handler);

/// Handles every incoming call until the slot ends, before sd-bus replies to any by itself. An exception
/// is sent as the error reply.
BusSlot handleCalls(sd_bus *bus, const Handler &handler);

BusMessage create(sd_bus *bus, const char *service, const char *path, const char *interface,
                  const char *method);

/// Sends a call. The handler is called once, with the reply, unless the connection ends first. If no
/// reply comes within the timeout, it gets an error reply named SD_BUS_ERROR_NO_REPLY. The handler must
/// not hold a message of the same connection: each would keep the other in memory.
void send(sd_bus *bus, const BusMessage &call, std::chrono::microseconds timeout,
          const Handler &handler);
} // namespace BusCalls
