// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/Options.h"

#include <string>

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>

// The parts of the definition, each with the commands of one kind. The order in which they are added
// is that of the help, the man page and the completions.
void defineNotificationCommands(CLI::App &app, Options &options);
void defineModelCommands(CLI::App &app, Options &options);
void defineOverviewCommands(CLI::App &app, Options &options);

/// Adds a command. The details are paragraphs; the examples, a line each, are shown as they are.
inline CLI::App *addCommand(CLI::App &app, Options &options, Options::Command command,
                            const std::string &name, const std::string &summary,
                            const std::string &details, const std::string &examples)
{
    CLI::App *added = app.add_subcommand(name, summary);
    // The options for every command may stand behind its name as well.
    added->fallthrough();
    added->footer(details + "\n\nExamples:\n" + examples);
    added->callback([&options, command] { options.command = command; });
    return added;
}

/// A number that is not negative, and no more about it in the help.
inline CLI::Validator notNegative()
{
    return CLI::NonNegativeNumber.description("");
}

/// What an option's or argument's value is called in the help. The completions know what to offer
/// by these names.
namespace ValueName {
constexpr const char *file = "FILE";
constexpr const char *path = "PATH";
constexpr const char *json = "JSON";
constexpr const char *title = "TITLE";
constexpr const char *message = "MESSAGE";
constexpr const char *id = "ID";
constexpr const char *number = "N";
constexpr const char *milliseconds = "MS";
constexpr const char *seconds = "SECONDS";
constexpr const char *format = "FORMAT";
constexpr const char *bus = "BUS";
constexpr const char *priority = "PRIORITY";
} // namespace ValueName
