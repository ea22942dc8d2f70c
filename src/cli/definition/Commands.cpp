// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"

#include "cli/Priority.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <system_error>

namespace {
constexpr const char *s_description =
    "Plays and shows notifications on a device that runs tavo-host, "
    "and reads the host's model.";

constexpr const char *s_text =
    "On a terminal, the output has colours and a live line. An error is printed as one line on "
    "standard error.\n\n"
    "Environment:\n"
    "  TAVO_BUS   the bus, unless --bus names one\n"
    "  NO_COLOR   if set and not empty: no colours";

bool isReplyTimeout(const std::string &text)
{
    constexpr double min = 0.01;
    constexpr double max = 86400;
    char *end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    // Not-a-number is refused as well.
    return end == text.c_str() + text.size() && seconds >= min && seconds <= max;
}

bool isBus(const std::string &text)
{
    const bool isAddress = text.find(':') != std::string::npos;
    return isAddress || text == "session" || text == "system";
}

bool isPriority(const std::string &text)
{
    return priorityFromText(text).has_value();
}

CommandDefinition programDefinition()
{
    CommandDefinition program;
    program.name = "tavo";
    program.summary = s_description;
    program.text = textBlocks(s_text);
    program.options = {
        {{"--version"}, ValueName::none, "Show the version"},
        {{"--bus"},
         ValueName::bus,
         "session, system or a bus address (session)",
         &Options::bus,
         {isBus, "must be session, system or a bus address such as unix:path=/run/bus"},
         false,
         "TAVO_BUS"},
        {{"--json"}, ValueName::none, "Print JSON", &Options::json},
        {{"--reply-timeout"},
         ValueName::seconds,
         "How long to wait for a reply of the bus or the host (10)",
         &Options::replyTimeoutSeconds,
         {isReplyTimeout, "must be a number from 0.01 to 86400"}}};
    return program;
}
} // namespace

std::vector<TextBlock> commandText(const std::string &details, const std::string &examples)
{
    return textBlocks(details + "\n\nExamples:\n" + examples);
}

ValueCheck notNegative()
{
    const auto isNotNegative = [](const std::string &text) {
        int number = -1;
        const char *end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        return error == std::errc() && stop == end && number >= 0;
    };
    return {isNotNegative, "must be an integer from 0 to 2147483647"};
}

ValueCheck notEmpty()
{
    return {[](const std::string &text) { return !text.empty(); }, "must not be empty"};
}

OptionDefinition priorityOption()
{
    return {{"-p", "--priority"},
            ValueName::priority,
            "low, normal, high, urgent or an integer; larger ones go first (normal)",
            &Options::priority,
            {isPriority, "must be low, normal, high, urgent or an integer"}};
}

OptionDefinition actionOption()
{
    const auto isAction = [](const std::string &text) {
        const auto sign = text.find('=');
        return sign != std::string::npos && sign > 0 && sign + 1 < text.size();
    };
    return {{"--action"},
            ValueName::keyAndLabel,
            "Something that people can choose; may be given more than once",
            &Options::actions,
            {isAction, "must be KEY=LABEL"}};
}

Definition commandLineDefinition()
{
    Definition definition{programDefinition(), notificationCommands()};
    for (auto more : {attentionCommands(), fleetCommands(), modelCommands(), overviewCommands()}) {
        std::move(more.begin(), more.end(), std::back_inserter(definition.commands));
    }
    const OptionDefinition help{
        {"-h", "--help"}, ValueName::none, "Show the help; after a command, that of the command"};
    definition.program.options.insert(definition.program.options.begin(), help);
    for (CommandDefinition &command : definition.commands) {
        command.options.insert(command.options.begin(), help);
    }
    return definition;
}
