// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "cli/Options.h"

#include <fleet/protocol/FleetAnswer.h>
#include <fleet/protocol/FleetCall.h>

/// The call that the options describe, or what is wrong with them.
Result<FleetCall> fleetCall(const Options &options);

/// "shown", "sounding" or "done", of a cancel "ended" or "nothing to end"; with what the call gives, or why it
/// failed.
QString answerText(const FleetAnswer &answer, FleetCall::Kind call);

/// The answer's fields without those that every answer has.
QVariantHash answerFields(const FleetAnswer &answer);
