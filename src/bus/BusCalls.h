// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusHandles.h"

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <functional>
#include <string>

/// What is asked of others on a bus, without waiting for it: answers and signals come to handlers,
/// while the bus is served. Everything throws an sdbus::Error when the connection doesn't take it.
namespace BusCalls {
using SignalHandler = std::function<void(sdbus::Message &signal)>;

/// Takes the answer to a call; the error is null for a good one. Keeps no message of the same bus,
/// which would keep the bus, and that the handler.
using AnswerHandler = std::function<void(sdbus::MethodReply &answer, const sdbus::Error *error)>;

/// Has the signals handled that match, until the slot's end: those from when the bus knows of it,
/// which is before it sees what is sent later. A bus that refuses ends the connection.
BusSlot addMatch(sd_bus *bus, const std::string &rule, const SignalHandler &handler);

sdbus::MethodCall create(sd_bus *bus, const char *service, const char *path, const char *interface,
                         const char *method);

/// The handler is called once, with an error when the patience is over, but not any more after the
/// connection's end.
void send(sd_bus *bus, const sdbus::MethodCall &call, std::chrono::microseconds patience,
          const AnswerHandler &handler);
} // namespace BusCalls
