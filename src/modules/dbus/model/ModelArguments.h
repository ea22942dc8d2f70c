// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Subscriptions.h"
#include <core/tavo.h>

class BusMessage;
class BusReader;

/// Reads and checks the arguments of calls to org.tavo.Model1. Throws BusError::invalidPath() for a string
/// that is not a path, and BusError::invalidArguments() for other arguments that are invalid.
namespace ModelArguments {
CMPath readPath(BusReader &reader);

/// The first argument of a call.
CMPath readPath(const BusMessage &call);

/// The first argument of a call that takes "/" for the whole model; "/" becomes an empty path.
CMPath readPathOrRoot(const BusMessage &call);

Subscriptions::Change readChange(BusReader &reader);

/// Checks a message or a sound. Throws BusError::limitExceeded() if its path, its id, or its texts with their
/// arguments, are too long.
void checkTexts(const QVariant &value);
} // namespace ModelArguments
