// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"

#include <mqtt/MqttSettings.h>

/// The broker of the options: the section "broker" of the configuration file, with the keys that options replace.
/// Without an option for the file, ~/.config/tavo/fleet.json or /etc/tavo/fleet.json is read if it is there.
Result<MqttSettings, ExitFailure> fleetBroker(const Options &options);
