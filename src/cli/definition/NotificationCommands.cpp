// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Definition.h"
#include "cli/Priority.h"
#include <CLI/Option.hpp>

namespace {
void addPriority(CLI::App &command, Options &options)
{
    const auto check = [](const std::string &text) {
        return priorityFromText(text) ? std::string()
                                      : "must be low, normal, high, urgent or an integer";
    };
    command
        .add_option("-p,--priority", options.priority,
                    "low, normal, high, urgent or an integer; larger ones go first (normal)")
        ->check(CLI::Validator(check, ""))
        ->type_name(ValueName::priority);
}

void defineSound(CLI::App &app, Options &options)
{
    CLI::App *sound = addCommand(
        app, options, Options::Command::Sound, "sound", "Play a sound notification",
        "Queues the sound by its priority, and lowers the music while the sound plays. FILE is a "
        "sound file, a file: or http: URI, or - for a sound file on standard input. Prints the id "
        "of the sound once it is queued, and exits.\n\n"
        "With --wait, the program waits for the end of the sound, and its exit code tells how the "
        "sound ended. Interrupting the program cancels the sound.\n\n"
        "With --loop, the sound repeats until it is cancelled. It ends with the program, so the "
        "program runs until it is interrupted.",
        "  tavo sound chime.flac\n"
        "  tavo sound --priority urgent --wait alarm.wav\n"
        "  tavo sound --loop --id bell ring.ogg\n"
        "  espeak --stdout 'Dinner is ready' | tavo sound -\n"
        "  tavo sound --stream 'audio/L16;rate=48000;channels=2' /run/intercom");
    sound
        ->add_option(ValueName::file, options.file,
                     "The sound: a file, a URI, or - for standard input")
        ->required()
        ->type_name(ValueName::file);
    sound->add_option("--id", options.id, "The id to cancel the sound by (a new one)")
        ->type_name(ValueName::id);
    addPriority(*sound, options);
    sound->add_flag("--loop", options.loop, "Repeat the sound until it is cancelled");
    sound
        ->add_option("--stream", options.streamFormat,
                     "FILE is a stream of this media type: a FIFO, a file or a URI")
        ->type_name(ValueName::format);
    sound->add_flag("-w,--wait", options.wait,
                    "Wait for the end of the sound, and print how it ended");
}

void defineShow(CLI::App &app, Options &options)
{
    CLI::App *show = addCommand(
        app, options, Options::Command::Show, "show", "Show a message on the display",
        "Queues the message by its priority and shows it for its timeout. Prints the number of the "
        "message once it is queued, and exits.\n\n"
        "With --wait, the program waits until the message is closed, and its exit code tells how "
        "it was closed. Interrupting the program closes the message.",
        "  tavo show 'The door is open'\n"
        "  tavo show --priority high --timeout 10000 Door 'Somebody rings'\n"
        "  tavo show --timeout 0 --wait Maintenance 'Take it away when you are done'");
    show->add_option(ValueName::title, options.title, "The message's title")
        ->required()
        ->type_name(ValueName::title);
    show->add_option(ValueName::message, options.message, "The message's text")
        ->type_name(ValueName::message);
    show->add_option("-t,--timeout", options.timeout,
                     "Show it for MS milliseconds; 0: until it is closed (the host's default)")
        ->check(notNegative())
        ->type_name(ValueName::milliseconds);
    addPriority(*show, options);
    show->add_flag("-w,--wait", options.wait, "Wait until the message is closed, and print how");
}

void defineCancel(CLI::App &app, Options &options)
{
    CLI::App *cancel = addCommand(
        app, options, Options::Command::Cancel, "cancel", "Cancel a sound or close a message",
        "An argument that begins with a slash is the path of a message, as tavo list prints it. A "
        "number is that of a message or, if no open message has it, the id of a sound. Anything "
        "else is the id of a sound, as tavo sound prints it. If there is no such sound or message, "
        "the exit code is 1.",
        "  tavo cancel bell\n"
        "  tavo cancel 17\n"
        "  tavo cancel \"$(tavo list --json | jq -r '.messages[0].path')\"");
    const auto check = [](const std::string &text) {
        return text.empty() ? "must not be empty" : std::string();
    };
    cancel
        ->add_option(ValueName::idOrPath, options.id,
                     "The sound's id, or the message's number or path")
        ->required()
        ->check(CLI::Validator(check, ""))
        ->type_name(ValueName::idOrPath);
}

void defineList(CLI::App &app, Options &options)
{
    CLI::App *list = addCommand(
        app, options, Options::Command::List, "list", "List the messages on the display",
        "Prints one line for each message: its place, path, title and text, in columns on a "
        "terminal, else separated by tabs. The first message is on display, the others wait. "
        "Waiting sounds can't be listed: the model does not have them. tavo status tells whether a "
        "sound is playing.",
        "  tavo list\n"
        "  tavo list --count 3 --json");
    list->add_option("-n,--count", options.count, "List at most N messages (100)")
        ->check(notNegative())
        ->type_name(ValueName::number);
}
} // namespace

void defineNotificationCommands(CLI::App &app, Options &options)
{
    defineSound(app, options);
    defineShow(app, options);
    defineCancel(app, options);
    defineList(app, options);
}
