// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/reference/Completions.h"
#include "cli/reference/Writers.h"

namespace {
constexpr const char *s_complete = "complete -c tavo";

/// The argument of complete that makes it offer values.
std::string offer(const std::string &valueName)
{
    switch (offerFor(valueName)) {
    case ValueOffer::Files:
        return " -F";
    case ValueOffer::NodePaths:
        return " -a " + shellQuoted(std::string("(") + s_listNodes + ')');
    case ValueOffer::MessagePaths:
        return " -a " + shellQuoted(std::string("(") + s_listMessages + ')');
    case ValueOffer::Words:
        return " -a " + shellQuoted(offeredWords(valueName));
    case ValueOffer::Nothing:
        break;
    }
    return {};
}

std::string option(const OptionDefinition &definition, const std::string &condition)
{
    std::string line = std::string(s_complete) + condition;
    for (const std::string &name : definition.names) {
        const bool isLong = name.size() > 2;
        line += isLong ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (!definition.valueName.empty()) {
        line += (offerFor(definition.valueName) == ValueOffer::Files ? " -r" : " -x") +
                offer(definition.valueName);
    }
    return line + " -d " + shellQuoted(definition.description) + '\n';
}

/// The condition that this command was typed, followed by `place` arguments if a place is given.
std::string when(const std::string &command, const std::string &place = {})
{
    return " -n " + shellQuoted("__tavo_is " + command + (place.empty() ? "" : ' ' + place));
}

std::string command(const CommandDefinition &definition)
{
    std::string lines = std::string(s_complete) + " -n __tavo_is -a " + definition.name + " -d " +
                        shellQuoted(definition.summary) + '\n';
    for (const OptionDefinition &each : definition.options) {
        const bool isEverywhere = each.names.back() == "--help";
        lines += isEverywhere ? std::string() : option(each, when(definition.name));
    }
    int place = 0;
    for (const OptionDefinition &positional : definition.positionals) {
        const std::string condition = when(definition.name, std::to_string(place++));
        const std::string values = offer(positional.valueName);
        if (!values.empty()) {
            lines.append(s_complete).append(condition).append(values).append("\n");
        }
    }
    return lines;
}

/// The function that the conditions call.
std::string conditionFunction(const Definition &definition)
{
    std::string names;
    for (const auto &each : valuedOptions(definition)) {
        names += ' ' + each.first;
    }
    return "function __tavo_is -a command place\n"
           "    set -l words\n"
           "    set -l is_value no\n"
           "    set -l typed (commandline -opc)\n"
           "    set -e typed[1]\n"
           "    for word in $typed\n"
           "        if test $is_value = yes\n"
           "            set is_value no\n"
           "            continue\n"
           "        end\n"
           "        switch $word\n"
           "            case" +
           names +
           "\n"
           "                set is_value yes\n"
           "            case '-?*'\n"
           "            case '*'\n"
           "                set -a words $word\n"
           "        end\n"
           "    end\n"
           "    test \"$words[1]\" = \"$command\"\n"
           "    and begin\n"
           "        test -z \"$place\"\n"
           "        or test (count $words) -eq (math $place + 1)\n"
           "    end\n"
           "end\n\n";
}
} // namespace

std::string fishCompletion(const Definition &definition)
{
    std::string text =
        "# fish completion for tavo\n\n" + conditionFunction(definition) + s_complete + " -f\n";
    for (const OptionDefinition &each : definition.program.options) {
        text += option(each, "");
    }
    for (const CommandDefinition &each : definition.commands) {
        text += '\n' + command(each);
    }
    return text;
}
