// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusMessage.h"
#include <core/model/cmerror.h>

#include <string>

/// The model's errors as error replies on a bus. Writing and reading one preserves its name, message and
/// title.
namespace ModelErrors {
/// "org.tavo.Error." and the error's name, with '_' for each character that a bus does not allow.
std::string busName(const CMError &error);

/// The error reply to a call. Its body is only the message if the error's name on the bus and the
/// message say everything, otherwise message, name and title.
BusMessage createReply(const BusMessage &call, const CMError &error);

/// The error in an error reply. An error that is not the model's keeps its name on the bus.
CMError read(const BusMessage &reply);
} // namespace ModelErrors
