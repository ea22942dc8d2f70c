// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/Options.h"
#include <CLI/App.hpp>
#include <CLI/Validators.hpp>

#include <charconv>
#include <string>
#include <system_error>

// Each function defines the commands of one kind. Help, man page and completions list the commands in
// the order in which they are added.
void defineNotificationCommands(CLI::App &app, Options &options);
void defineModelCommands(CLI::App &app, Options &options);
void defineOverviewCommands(CLI::App &app, Options &options);

/// Adds a command. The details are paragraphs; the examples are lines.
inline CLI::App *addCommand(CLI::App &app, Options &options, Options::Command command,
                            const std::string &name, const std::string &summary,
                            const std::string &details, const std::string &examples)
{
    CLI::App *added = app.add_subcommand(name, summary);
    // The global options may also follow the command's name.
    added->fallthrough();
    added->footer(details + "\n\nExamples:\n" + examples);
    added->callback([&options, command] { options.command = command; });
    return added;
}

/// Accepts integers from 0 to the largest int, and adds nothing to the help.
inline CLI::Validator notNegative()
{
    const auto complaint = [](const std::string &text) -> std::string {
        int number = -1;
        const char *end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        return error == std::errc() && stop == end && number >= 0
                   ? ""
                   : "must be an integer from 0 to 2147483647";
    };
    return CLI::Validator(complaint, "");
}

/// The names of values in the help. The completions offer values by these names.
namespace ValueName {
constexpr const char *file = "FILE";
constexpr const char *path = "PATH";
constexpr const char *json = "JSON";
constexpr const char *title = "TITLE";
constexpr const char *message = "MESSAGE";
constexpr const char *id = "ID";
constexpr const char *idOrPath = "ID|PATH";
constexpr const char *number = "N";
constexpr const char *milliseconds = "MS";
constexpr const char *seconds = "SECONDS";
constexpr const char *format = "FORMAT";
constexpr const char *bus = "BUS";
constexpr const char *priority = "PRIORITY";
} // namespace ValueName
