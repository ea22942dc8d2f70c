// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"

namespace {
CommandDefinition status()
{
    CommandDefinition command{Options::Command::Status, "status", "Show what is going on"};
    command.text = commandText(
        "Prints whether a notification sounds, what the main audio plays and whether it is ducked, "
        "which message is on display and how many wait, the state of do-not-disturb, rules and "
        "history, and which modules hold which resource. "
        "Waiting sounds are not printed: the model does not have them.",
        "  tavo status\n"
        "  tavo status --json | jq .audio.ducked");
    return command;
}

CommandDefinition doctor()
{
    CommandDefinition command{Options::Command::Doctor, "doctor",
                              "Find out what is missing and how to fix it"};
    command.text = commandText(
        "Checks the disks, the installed modules, the configuration and the service of a device's "
        "host, the bus, the host on it, its modules, do-not-disturb, its settings and the history, "
        "the desktop notifications, the sound devices and the screen. Each problem is printed with "
        "a remedy. The exit code is 1 if something is missing.",
        "  tavo doctor\n"
        "  tavo --bus system doctor --json");
    return command;
}
} // namespace

std::vector<CommandDefinition> overviewCommands()
{
    return {status(), doctor()};
}
