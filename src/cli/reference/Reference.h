// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// An option, a flag or a positional argument.
struct OptionReference
{
    std::vector<std::string> names; ///< "-w", "--wait"; empty for a positional argument
    std::string valueName;          ///< empty for a flag
    std::string description;
    bool isRequired = false;

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
struct CommandReference
{
    std::string name;
    std::string summary;
    std::vector<TextBlock> text;
    std::vector<OptionReference> positionals;
    std::vector<OptionReference> options;

    /// "[OPTIONS] FILE"
    std::string synopsis() const;
};

/// The command line's definition as plain data, from which help, man page and completions are
/// written.
struct Reference
{
    CommandReference program; ///< its options can be used with every command
    std::vector<CommandReference> commands;

    static Reference of(const CLI::App &app);

    const CommandReference *find(const std::string &command) const;
};

/// Splits a text at its empty lines. If the first line of a part ends with a colon and the others are
/// indented, it is a heading with lines, else a paragraph.
std::vector<TextBlock> textBlocks(const std::string &text);
