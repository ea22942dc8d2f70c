// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Definition.h"

void defineOverviewCommands(CLI::App &app, Options &options)
{
    addCommand(
        app, options, Options::Command::Status, "status", "Tell what goes on at the moment",
        "Whether a notification sounds, what plays as the main audio and whether it is ducked, "
        "what is on display and what waits behind it, who holds which resource. Which sounds "
        "wait is not in the model, and so isn't told.",
        "  tavo status\n"
        "  tavo status --json | jq .audio.ducked");
    addCommand(
        app, options, Options::Command::Doctor, "doctor",
        "Find out what is missing, and how to mend it",
        "Looks at the bus, the host on it, the host's modules, the desktop notifications and "
        "the sound devices. Each finding comes with what to do about it. The exit code is 1 "
        "when something is missing.",
        "  tavo doctor\n"
        "  tavo --bus system doctor --json");
}
