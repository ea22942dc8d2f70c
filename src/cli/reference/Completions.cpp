// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/reference/Completions.h"

#include "cli/definition/Commands.h"

std::string offeredWords(const std::string &valueName)
{
    if (valueName == ValueName::priority) {
        return "low normal high urgent";
    }
    if (valueName == ValueName::state) {
        return "on off until";
    }
    if (valueName == ValueName::ruleTask) {
        return "list check test";
    }
    if (valueName == ValueName::fleetAction) {
        return "list watch show notify sound say cancel call ping";
    }
    return valueName == ValueName::bus ? "session system" : "";
}

ValueOffer offerFor(const std::string &valueName)
{
    if (valueName == ValueName::file || valueName == ValueName::fileOrTitle) {
        return ValueOffer::Files;
    }
    if (valueName == ValueName::path) {
        return ValueOffer::NodePaths;
    }
    if (valueName == ValueName::idOrPath) {
        return ValueOffer::MessagePaths;
    }
    return offeredWords(valueName).empty() ? ValueOffer::Nothing : ValueOffer::Words;
}

std::map<std::string, std::string> valuedOptions(const Definition &definition)
{
    std::map<std::string, std::string> valued;
    const auto add = [&valued](const CommandDefinition &command) {
        for (const OptionDefinition &option : command.options) {
            for (const std::string &name : option.names) {
                if (!option.valueName.empty()) {
                    valued.emplace(name, option.valueName);
                }
            }
        }
    };
    add(definition.program);
    for (const CommandDefinition &command : definition.commands) {
        add(command);
    }
    return valued;
}

std::string shellQuoted(const std::string &text)
{
    std::string quoted = "'";
    for (const char character : text) {
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return quoted + '\'';
}
