// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/Options.h"

#include <string>
#include <variant>
#include <vector>

/// What an option's value must be. By default anything is accepted.
struct ValueCheck
{
    bool (*accepts)(const std::string &value) = nullptr;
    const char *requirement = ""; ///< the error message, "must be ..."
};

/// An option, a flag or a positional argument.
struct OptionDefinition
{
    /// Where the value goes. --help and --version have no target. An option whose target is a list
    /// may be given more than once.
    using Target = std::variant<std::monostate, bool Options::*, int Options::*, double Options::*,
                                std::string Options::*, std::vector<std::string> Options::*>;

    std::vector<std::string> names; ///< "-w", "--wait"; empty for a positional argument
    std::string valueName;          ///< empty for a flag
    std::string description;
    Target target = {};
    ValueCheck check = {};
    bool isRequired = false;
    const char *environmentVariable = ""; ///< has the value if the option is not given
    /// The values of the command's first argument with which it has a meaning; empty: all.
    std::vector<std::string> actions = {};

    bool isPositional() const { return names.empty(); }
    /// "-p, --priority PRIORITY"
    std::string synopsis() const;
};

/// A paragraph, or lines below a heading.
struct TextBlock
{
    std::string heading; ///< empty for a paragraph
    std::vector<std::string> lines;
};

/// A command and its documentation.
struct CommandDefinition
{
    Options::Command command = {};
    std::string name;
    std::string summary;
    std::vector<TextBlock> text = {};
    std::vector<OptionDefinition> positionals = {};
    std::vector<OptionDefinition> options = {};

    /// "[OPTIONS] FILE"
    std::string synopsis() const;
};

/// The commands, the options and their descriptions: what the parser accepts, and the source of
/// --help, the man page and the completions.
struct Definition
{
    CommandDefinition program; ///< its options can be used with every command
    std::vector<CommandDefinition> commands;

    const CommandDefinition *find(const std::string &command) const;
};

/// Splits a text at its empty lines. If the first line of a part ends with a colon and the others are
/// indented, it is a heading with lines, else a paragraph.
std::vector<TextBlock> textBlocks(const std::string &text);
