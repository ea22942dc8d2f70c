// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/reference/Completions.h"
#include "cli/reference/Writers.h"

namespace {
/// Escapes the text for _arguments and _describe.
std::string escaped(const std::string &text)
{
    std::string result;
    for (const char character : text) {
        const bool isSign = character == ':' || character == '[' || character == ']';
        result += (isSign ? "\\" : "") + std::string(1, character);
    }
    return result;
}

std::string action(const std::string &valueName)
{
    switch (offerFor(valueName)) {
    case ValueOffer::Files:
        return "_files";
    case ValueOffer::NodePaths:
        return "_tavo_nodes";
    case ValueOffer::MessagePaths:
        return "_tavo_messages";
    case ValueOffer::Words:
        return '(' + offeredWords(valueName) + ')';
    case ValueOffer::Nothing:
        break;
    }
    return " ";
}

/// One of an option's names, in the form that _arguments reads.
std::string optionArgument(const OptionDefinition &option, const std::string &names,
                           const std::string &name)
{
    std::string argument = '(' + names + ')' + name;
    const bool isLong = name.size() > 2;
    argument += isLong && !option.valueName.empty() ? "=" : "";
    argument += '[' + escaped(option.description) + ']';
    if (!option.valueName.empty()) {
        argument += ':' + escaped(option.valueName) + ':' + action(option.valueName);
    }
    return argument;
}

std::string positionalArgument(const OptionDefinition &positional, int place)
{
    return std::to_string(place) + (positional.isRequired ? ":" : "::") +
           escaped(positional.valueName) + ':' + action(positional.valueName);
}

std::string line(const std::string &indent, const std::string &argument)
{
    return indent + shellQuoted(argument) + " \\\n";
}

/// A line for each of an option's names, which exclude each other.
std::string options(const CommandDefinition &command, const std::string &indent)
{
    std::string lines;
    for (const OptionDefinition &option : command.options) {
        std::string names;
        for (const std::string &name : option.names) {
            names += (names.empty() ? "" : " ") + name;
        }
        for (const std::string &name : option.names) {
            lines += line(indent, optionArgument(option, names, name));
        }
    }
    return lines;
}

std::string positionals(const CommandDefinition &command, const std::string &indent)
{
    std::string lines;
    int place = 0;
    for (const OptionDefinition &positional : command.positionals) {
        lines += line(indent, positionalArgument(positional, ++place));
    }
    return lines;
}

/// A function that offers the lines that the command prints.
std::string pathFunction(const std::string &name, const std::string &command)
{
    return name +
           "() {\n"
           "    local -a paths\n"
           "    paths=(${(f)\"$(" +
           command +
           ")\"})\n"
           "    compadd -a paths\n"
           "}\n\n";
}

std::string commands(const Definition &definition)
{
    std::string lines;
    for (const CommandDefinition &command : definition.commands) {
        lines += "            " + shellQuoted(command.name + ':' + escaped(command.summary)) + '\n';
    }
    return lines;
}

std::string cases(const Definition &definition)
{
    const std::string indent(16, ' ');
    std::string lines;
    for (const CommandDefinition &command : definition.commands) {
        CommandDefinition all = command;
        for (const OptionDefinition &option : definition.program.options) {
            if (option.names.back() != "--help") {
                all.options.push_back(option);
            }
        }
        lines += "        " + command.name + ")\n            _arguments -S \\\n" +
                 options(all, indent) + positionals(command, indent) + indent + "&& return 0\n" +
                 "            ;;\n";
    }
    return lines;
}
} // namespace

std::string zshCompletion(const Definition &definition)
{
    return "#compdef tavo\n\n" + pathFunction("_tavo_nodes", s_listNodes) +
           pathFunction("_tavo_messages", s_listMessages) +
           "_tavo() {\n"
           "    local context state state_descr line\n"
           "    local -a commands\n"
           "    typeset -A opt_args\n"
           "    _arguments -C -S \\\n" +
           options(definition.program, std::string(8, ' ')) +
           "        '1:command:->command' '*::argument:->argument' && return 0\n"
           "    case $state in\n"
           "    command)\n"
           "        commands=(\n" +
           commands(definition) +
           "        )\n"
           "        _describe -t commands command commands && return 0\n"
           "        ;;\n"
           "    argument)\n"
           "        case $line[1] in\n" +
           cases(definition) +
           "        esac\n"
           "        ;;\n"
           "    esac\n"
           "    return 1\n"
           "}\n\n"
           "_tavo \"$@\"\n";
}
