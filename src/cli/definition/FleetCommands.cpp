// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"

#include <array>

namespace {
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

std::vector<OptionDefinition> callOptions()
{
    return {{{"-g", "--group"},
             ValueName::group,
             "The devices of this group; all: every device. May be given more than once",
             &Options::fleetGroups},
            {{"-d", "--device"},
             ValueName::device,
             "This device; may be given more than once",
             &Options::fleetDevices},
            {{"--id"},
             ValueName::id,
             "The id of the call, to cancel or to repeat it by (a new one)",
             &Options::id},
            priorityOption(),
            {{"-t", "--timeout"},
             ValueName::milliseconds,
             "show, notify: show it for MS milliseconds; 0: until it is closed (the device's "
             "default)",
             &Options::timeout,
             notNegative()},
            {{"--icon"}, ValueName::icon, "show, notify: an icon of the devices", &Options::icon},
            actionOption(),
            {{"--sound"},
             ValueName::file,
             "show, notify: play this too, a sound of the devices",
             &Options::file},
            {{"--everywhere"},
             ValueName::none,
             "show, notify: when a person closes it on one device, it is closed on all",
             &Options::everywhere},
            {{"--at"},
             ValueName::time,
             "sound: start then, by the clocks of the devices",
             &Options::at}};
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
        "shows and plays. watch prints what devices say, until interrupted.\n\n"
        "The other actions call devices: show TITLE [TEXT], notify TITLE [TEXT], sound NAME, say "
        "TEXT, cancel ID, call PATH [JSON], ping. Each answer is printed when it comes: the "
        "device, and shown, sounding, done or error with the reason. The call is repeated, with "
        "the same id, to devices that have not answered; a device carries it out once. When all "
        "devices have answered, or the time of --reply-timeout is up, those without an answer are "
        "printed, and the program exits: with 0 if all have answered without an error, with 1 "
        "after an error, with 75 if an answer is missing.",
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
        {{},
         ValueName::argument,
         "The title, the sound, the text, the id or the path",
         &Options::fleetArgument},
        {{}, ValueName::textOrJson, "show, notify: the text; call: the value", &Options::message}};
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
