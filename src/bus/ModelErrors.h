// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusMessage.h"
#include <core/model/cmerror.h>

#include <string>

/// The model's errors as error replies on a bus. Name, message and title survive the way there and
/// back.
namespace ModelErrors {
/// "org.tavo.Error." and the error's name, with '_' for each character that a bus does not allow.
std::string busName(const CMError &error);

/// The error reply to a call. Its body is the message alone where the bus's name and the message tell
/// everything, else message, name and title.
BusMessage createReply(const BusMessage &call, const CMError &error);

/// The error that an error reply holds. An error that is not the model's keeps its name on the bus.
CMError read(const BusMessage &reply);
} // namespace ModelErrors
