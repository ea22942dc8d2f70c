// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "cli/Options.h"

#include <fleet/protocol/FleetAnswer.h>
#include <fleet/protocol/FleetCall.h>

/// The call that the options describe, or what is wrong with them.
Result<FleetCall> fleetCall(const Options &options);

/// "shown", "sounding", "done"; "ended" or "nothing to end" of a cancel; or with what the call gives or the reason of the error.
QString answerText(const FleetAnswer &answer, FleetCall::Kind call);

/// The answer's fields without those that every answer has.
QVariantHash answerFields(const FleetAnswer &answer);
