// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/reference/Writers.h"

#include <algorithm>
#include <sstream>

namespace {
constexpr std::size_t s_width = 80;
constexpr std::size_t s_column = 28;

/// Wraps the words into lines, and indents all lines except the first.
std::string wrapped(const std::string &text, std::size_t begin, std::size_t indent)
{
    std::string result;
    std::size_t column = begin;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (column > indent && column + 1 + word.size() > s_width) {
            result += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (!result.empty()) {
            result += ' ';
            ++column;
        }
        result += word;
        column += word.size();
    }
    return result;
}

std::string entry(const std::string &name, const std::string &description)
{
    std::string line = "  " + name;
    // At least two blanks separate the columns.
    if (line.size() + 2 > s_column) {
        line += '\n' + std::string(s_column, ' ');
    } else {
        line.resize(s_column, ' ');
    }
    return line + wrapped(description, s_column, s_column) + '\n';
}

std::string entries(const std::string &heading, const std::vector<OptionDefinition> &options)
{
    std::string text;
    for (const OptionDefinition &option : options) {
        text += entry(option.synopsis(), option.description);
    }
    return text.empty() ? text : '\n' + heading + ":\n" + text;
}

std::string blocks(const std::vector<TextBlock> &text)
{
    std::string result;
    for (const TextBlock &block : text) {
        result += '\n';
        if (!block.heading.empty()) {
            result += block.heading + ":\n";
        }
        for (const std::string &line : block.lines) {
            result += (block.heading.empty() ? wrapped(line, 0, 0) : line) + '\n';
        }
    }
    return result;
}
} // namespace

std::string helpText(const Definition &definition)
{
    std::string text = "Usage: " + definition.program.name + " [OPTIONS] COMMAND ...\n\n" +
                       wrapped(definition.program.summary, 0, 0) + "\n\nCommands:\n";
    for (const CommandDefinition &command : definition.commands) {
        text += entry(command.name, command.summary);
    }
    text += entries("Options", definition.program.options);
    text += blocks(definition.program.text);
    return text + "\nMore: " + definition.program.name + " COMMAND --help, man " +
           definition.program.name + '\n';
}

std::string helpText(const Definition &definition, const CommandDefinition &command)
{
    std::string text = "Usage: " + definition.program.name + ' ' + command.name + ' ' +
                       command.synopsis() + "\n\n" + command.summary + ".\n";
    text += entries("Arguments", command.positionals);
    text += entries("Options", command.options);
    std::vector<OptionDefinition> general = definition.program.options;
    general.erase(std::remove_if(general.begin(), general.end(),
                                 [&](const OptionDefinition &option) {
                                     return option.names.back() == "--help";
                                 }),
                  general.end());
    text += entries("Options of every command", general);
    return text + blocks(command.text);
}
