// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"

namespace {
CommandDefinition sound()
{
    CommandDefinition command{Options::Command::Sound, "sound", "Play a sound notification"};
    command.text = commandText(
        "Queues the sound by its priority, and lowers the music while the sound plays. FILE is a "
        "sound file, a file: or http: URI, or - for a sound file on standard input. Prints the id "
        "of the sound once it is queued, and exits.\n\n"
        "With --wait, the program waits for the end of the sound, and its exit code tells how the "
        "sound ended. Interrupting the program cancels the sound.\n\n"
        "With --loop, the sound repeats until it is cancelled. It ends with the program, so the "
        "program runs until it is interrupted. A stream ends with the program too, so --stream "
        "implies --wait.",
        "  tavo sound chime.flac\n"
        "  tavo sound --priority urgent --wait alarm.wav\n"
        "  tavo sound --loop --id bell ring.ogg\n"
        "  espeak --stdout 'Dinner is ready' | tavo sound -\n"
        "  tavo sound --stream 'audio/L16;rate=48000;channels=2' /run/intercom");
    command.positionals = {{{},
                            ValueName::file,
                            "The sound: a file, a URI, or - for standard input",
                            &Options::file,
                            {},
                            true}};
    command.options = {
        {{"--id"}, ValueName::id, "The id to cancel the sound by (a new one)", &Options::id},
        priorityOption(),
        {{"--loop"}, ValueName::none, "Repeat the sound until it is cancelled", &Options::loop},
        {{"--stream"},
         ValueName::format,
         "FILE is a stream of this media type: a FIFO or an http: URI",
         &Options::streamFormat},
        {{"-w", "--wait"},
         ValueName::none,
         "Wait for the end of the sound, and print how it ended",
         &Options::wait}};
    return command;
}

CommandDefinition show()
{
    CommandDefinition command{Options::Command::Show, "show", "Show a message on the display"};
    command.text = commandText(
        "Queues the message by its priority and shows it for its timeout. Prints the number of the "
        "message once it is queued, and exits.\n\n"
        "With --wait, the program waits until the message is closed, and its exit code tells how "
        "it was closed. Interrupting the program closes the message.",
        "  tavo show 'The door is open'\n"
        "  tavo show --priority high --timeout 10000 Door 'Somebody rings'\n"
        "  tavo show --timeout 0 --wait Maintenance 'Take it away when you are done'");
    command.positionals = {{{}, ValueName::title, "The message's title", &Options::title, {}, true},
                           {{}, ValueName::message, "The message's text", &Options::message}};
    command.options = {{{"-t", "--timeout"},
                        ValueName::milliseconds,
                        "Show it for MS milliseconds; 0: until it is closed (the host's default)",
                        &Options::timeout,
                        notNegative()},
                       priorityOption(),
                       {{"-w", "--wait"},
                        ValueName::none,
                        "Wait until the message is closed, and print how",
                        &Options::wait}};
    return command;
}

CommandDefinition cancel()
{
    CommandDefinition command{Options::Command::Cancel, "cancel",
                              "Cancel a sound or close a message"};
    command.text = commandText(
        "An argument that begins with a slash is the path of a message, as tavo list prints it. A "
        "number is that of a message or, if no open message has it, the id of a sound. Anything "
        "else is the id of a sound, as tavo sound prints it. If there is no such sound or message, "
        "the exit code is 1.",
        "  tavo cancel bell\n"
        "  tavo cancel 17\n"
        "  tavo cancel \"$(tavo list --json | jq -r '.messages[0].path')\"");
    command.positionals = {{{},
                            ValueName::idOrPath,
                            "The sound's id, or the message's number or path",
                            &Options::id,
                            notEmpty(),
                            true}};
    return command;
}

CommandDefinition list()
{
    CommandDefinition command{Options::Command::List, "list", "List the messages on the display"};
    command.text = commandText(
        "Prints one line for each message: its place, path, title and text, in columns on a "
        "terminal, else separated by tabs. The first message is on display, the others wait. On a "
        "terminal, the first line ends with the time that the message has left. "
        "Waiting sounds can't be listed: the model does not have them. tavo status tells whether a "
        "sound is playing.",
        "  tavo list\n"
        "  tavo list --count 3 --json");
    command.options = {{{"-n", "--count"},
                        ValueName::number,
                        "List at most N messages (100)",
                        &Options::count,
                        notNegative()}};
    return command;
}
} // namespace

std::vector<CommandDefinition> notificationCommands()
{
    return {sound(), show(), cancel(), list()};
}
