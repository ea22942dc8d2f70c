// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/reference/Completions.h"
#include "cli/reference/Writers.h"

namespace {
const char *const s_complete = "complete -c tavo";

/// What to offer for a value, as an argument of complete.
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

std::string option(const OptionReference &reference, const std::string &condition)
{
    std::string line = s_complete + condition;
    for (const std::string &name : reference.names) {
        const bool isLong = name.size() > 2;
        line += isLong ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (!reference.valueName.empty()) {
        line += (offerFor(reference.valueName) == ValueOffer::Files ? " -r" : " -x") +
                offer(reference.valueName);
    }
    return line + " -d " + shellQuoted(reference.description) + '\n';
}

std::string command(const CommandReference &reference)
{
    std::string lines = std::string(s_complete) + " -n __fish_use_subcommand -a " + reference.name +
                        " -d " + shellQuoted(reference.summary) + '\n';
    const std::string condition =
        " -n " + shellQuoted("__fish_seen_subcommand_from " + reference.name);
    for (const OptionReference &each : reference.options) {
        const bool isEverywhere = each.names.back() == "--help";
        lines += isEverywhere ? std::string() : option(each, condition);
    }
    for (const OptionReference &positional : reference.positionals) {
        const std::string values = offer(positional.valueName);
        lines += values.empty() ? values : s_complete + condition + values + '\n';
    }
    return lines;
}
} // namespace

std::string fishCompletion(const Reference &reference)
{
    std::string text = std::string("# fish completion for tavo\n\n") + s_complete + " -f\n";
    for (const OptionReference &each : reference.program.options) {
        text += option(each, "");
    }
    for (const CommandReference &each : reference.commands) {
        text += '\n' + command(each);
    }
    return text;
}
