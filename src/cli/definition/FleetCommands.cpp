// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"

#include <array>
#include <cctype>

namespace {
const std::vector<std::string> s_messageActions{"show", "notify"};

bool isFleetAction(const std::string &text)
{
    constexpr std::array<const char *, 9> actions{"list", "watch",  "show", "notify", "sound",
                                                  "say",  "cancel", "call", "ping"};
    for (const char *action : actions) {
        if (text == action) {
            return true;
        }
    }
    return false;
}

/// An option that has a meaning with these actions only, which its description says.
OptionDefinition of(const std::vector<std::string> &actions, OptionDefinition option)
{
    std::string names;
    for (const std::string &action : actions) {
        names += (names.empty() ? "" : ", ") + action;
    }
    option.description.front() = char(std::tolower(option.description.front()));
    option.description.insert(0, names + ": ");
    option.actions = actions;
    return option;
}

std::vector<OptionDefinition> callOptions()
{
    return {
        {{"-g", "--group"},
         ValueName::group,
         "The devices of this group; all: every device. May be given more than once",
         &Options::fleetGroups},
        {{"-d", "--device"},
         ValueName::device,
         "This device; may be given more than once",
         &Options::fleetDevices},
        of({"show", "notify", "sound", "say", "cancel", "call", "ping"},
           {{"--id"},
            ValueName::id,
            "the id of the call, to cancel or to repeat it by (a new one)",
            &Options::id}),
        of({"show", "notify", "sound", "say"}, priorityOption()),
        of(s_messageActions,
           {{"-t", "--timeout"},
            ValueName::milliseconds,
            "show it for MS milliseconds; 0: until it is closed (the device's default)",
            &Options::timeout,
            notNegative()}),
        of(s_messageActions,
           {{"--icon"}, ValueName::icon, "an icon of the devices", &Options::icon}),
        of(s_messageActions, actionOption()),
        of(s_messageActions,
           {{"--sound"}, ValueName::file, "play this too, a sound of the devices", &Options::file}),
        of(s_messageActions, {{"--everywhere"},
                              ValueName::none,
                              "when a person closes it on one device, it is closed on all",
                              &Options::everywhere}),
        of({"sound"},
           {{"--at"},
            ValueName::time,
            "start then, by the clocks of the devices, such as 07:00:30, 2026-12-24T18:00:00Z or "
            "90s",
            &Options::at})};
}

std::vector<OptionDefinition> brokerOptions()
{
    return {{{"--broker"},
             ValueName::url,
             "The broker: mqtts://HOST[:PORT], or mqtt:// without encryption",
             &Options::broker,
             {},
             false,
             "TAVO_BROKER"},
            {{"--config"},
             ValueName::file,
             "Read the broker from this file (~/.config/tavo/fleet.json or /etc/tavo/fleet.json)",
             &Options::configuration},
            {{"--ca"},
             ValueName::file,
             "The authority that the broker's certificate must be of (the system's)",
             &Options::ca},
            {{"--certificate"},
             ValueName::file,
             "The certificate to show to the broker",
             &Options::certificate},
            {{"--key"}, ValueName::file, "The certificate's key", &Options::key},
            {{"--user"}, ValueName::name, "The user's name at the broker", &Options::user},
            {{"--password-file"},
             ValueName::file,
             "The file whose first line is the password",
             &Options::passwordFile}};
}

CommandDefinition fleet()
{
    CommandDefinition command{Options::Command::Fleet, "fleet",
                              "List, watch and call the devices of a fleet"};
    command.text = commandText(
        "Talks to devices that run tavo-fleet, through their MQTT broker. Needs no host.\n\n"
        "list prints a line for each device: its name, online or away, its groups, and what it "
        "shows and plays if it is online. watch prints what devices say, until interrupted.\n\n"
        "The other actions call devices: show TITLE [TEXT], notify TITLE [TEXT], sound NAME, say "
        "TEXT, cancel ID, call PATH [JSON], ping. Each answer is printed when it comes: the "
        "device, and shown, sounding, done, error with the reason or, of a cancel, ended or "
        "nothing to end. The call is repeated, with the same id, to devices that have not "
        "answered; a device carries it out once. When all "
        "devices have answered, or the time of --reply-timeout is up, those without an answer are "
        "printed, and the program exits: with 0 if all have answered without an error, with 1 "
        "after an error or if there was nothing to cancel, with 75 if an answer is missing. With "
        "--at, devices answer when the sound starts, and the time counts from then on.",
        "  tavo fleet --broker mqtts://broker.example list\n"
        "  tavo fleet show --group floor-3 Water 'Room 301' --priority urgent --timeout 0\n"
        "  tavo fleet sound --device hall --device porch bell\n"
        "  tavo fleet cancel --group all leak-7\n"
        "  tavo fleet watch --json | jq .value");
    command.positionals = {
        {{},
         ValueName::fleetAction,
         "list, watch, show, notify, sound, say, cancel, call or ping",
         &Options::fleetAction,
         {isFleetAction, "must be list, watch, show, notify, sound, say, cancel, call or ping"},
         true},
        of({"show", "notify", "sound", "say", "cancel", "call"},
           {{},
            ValueName::argument,
            "the title, the sound, the text, the id or the path",
            &Options::fleetArgument}),
        of({"show", "notify", "call"},
           {{}, ValueName::textOrJson, "the text or the value", &Options::message})};
    command.options = callOptions();
    for (const OptionDefinition &option : brokerOptions()) {
        command.options.push_back(option);
    }
    return command;
}
} // namespace

std::vector<CommandDefinition> fleetCommands()
{
    return {fleet()};
}
