// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/definition/Definition.h"

#include <string>
#include <vector>

/// What tavo accepts.
Definition commandLineDefinition();

// Each function defines the commands of one kind, without --help, which every command has. Help, man
// page and completions list them in this order.
std::vector<CommandDefinition> notificationCommands();
std::vector<CommandDefinition> attentionCommands();
std::vector<CommandDefinition> fleetCommands();
std::vector<CommandDefinition> modelCommands();
std::vector<CommandDefinition> overviewCommands();

/// The text of a command. The details are paragraphs; the examples are lines.
std::vector<TextBlock> commandText(const std::string &details, const std::string &examples);

/// Accepts integers from 0 to the largest int.
ValueCheck notNegative();

/// Accepts all but the empty string.
ValueCheck notEmpty();

/// The priority of a sound or a message.
OptionDefinition priorityOption();

/// "KEY=LABEL", more than once.
OptionDefinition actionOption();

/// The names of values in the help. The completions offer values by these names.
namespace ValueName {
constexpr const char *none = ""; ///< of a flag
constexpr const char *file = "FILE";
constexpr const char *path = "PATH";
constexpr const char *json = "JSON";
constexpr const char *title = "TITLE";
constexpr const char *message = "MESSAGE";
constexpr const char *id = "ID";
constexpr const char *idOrPath = "ID|PATH";
constexpr const char *text = "TEXT";
constexpr const char *name = "NAME";
constexpr const char *icon = "ICON";
constexpr const char *words = "WORDS";
constexpr const char *time = "TIME";
constexpr const char *keyAndLabel = "KEY=LABEL";
constexpr const char *state = "STATE";
constexpr const char *ruleTask = "TASK";
constexpr const char *fleetAction = "ACTION";
constexpr const char *argument = "ARGUMENT";
constexpr const char *group = "GROUP";
constexpr const char *device = "DEVICE";
constexpr const char *url = "URL";
constexpr const char *textOrJson = "TEXT|JSON";
constexpr const char *fileOrTitle = "FILE|TITLE";
constexpr const char *number = "N";
constexpr const char *milliseconds = "MS";
constexpr const char *seconds = "SECONDS";
constexpr const char *format = "FORMAT";
constexpr const char *bus = "BUS";
constexpr const char *priority = "PRIORITY";
} // namespace ValueName
