// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/model/cmerror.h>

#include <sdbus-c++/sdbus-c++.h>

#include <string>

/// Errors on a bus, each made to be thrown to the edge of a call, where it becomes the answer.
namespace BusErrors {
/// What a caller sent can't be meant.
sdbus::Error invalidArguments(const std::string &message);
/// The caller has reached a limit.
sdbus::Error limitExceeded(const std::string &message);
/// The caller may not have what it asks for.
sdbus::Error accessDenied(const std::string &message);
/// A text that is no path of the model.
sdbus::Error invalidPath(const std::string &message);
/// A value of the model that a message can't hold.
sdbus::Error unsupportedValue(const std::string &message);

/// Throws what the result of a call of sd-bus's is, unless that is good.
void check(int result, const char *what);

/// What unsupportedValue() is called as an error of the model.
QString unsupportedValueName();
} // namespace BusErrors

/// The model's errors as errors on a bus, and back: name, message and title are kept.
namespace BusError {
/// The name on the bus: "org.tavo.Error." and the error's own, as far as a bus allows.
std::string nameOf(const CMError &error);

/// The answer to a call. Its body is the message and, where the bus's name doesn't tell the error's
/// exactly or the title is not the default one, also the name and the title.
sdbus::MethodReply reply(const sdbus::MethodCall &call, const CMError &error);

/// What such an answer says. Of errors that are none of the model's, the name is the bus's.
CMError read(const sdbus::Error &error, sdbus::MethodReply &answer);
} // namespace BusError
