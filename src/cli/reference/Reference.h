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
    std::vector<std::string> names; ///< "-w", "--wait"; none for a positional argument
    std::string valueName;          ///< empty for a flag
    std::string description;
    bool isRequired = false;

    bool isPositional() const { return names.empty(); }
    /// "-p, --priority PRIORITY"
    std::string synopsis() const;
};

/// A stretch of text: a paragraph, or lines that stand as they are below a heading.
struct TextBlock
{
    std::string heading; ///< empty for a paragraph
    std::vector<std::string> lines;
};

/// A command with all that is to be told about it.
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

/// The whole command line in plain data, read off its definition: the one source of the help, the
/// man page and the completions.
struct Reference
{
    CommandReference program; ///< its options may stand with every command
    std::vector<CommandReference> commands;

    static Reference of(const CLI::App &app);

    const CommandReference *find(const std::string &command) const;
};

/// Takes a text apart: paragraphs are parted by empty lines, and one whose first line ends with a
/// colon and whose others are indented is a heading with lines.
std::vector<TextBlock> textBlocks(const std::string &text);
