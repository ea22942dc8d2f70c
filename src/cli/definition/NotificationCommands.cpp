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
                                      : "must be low, normal, high, urgent or a whole number";
    };
    command
        .add_option("-p,--priority", options.priority,
                    "low, normal, high, urgent, or any whole number; larger goes first (normal)")
        ->check(CLI::Validator(check, ""))
        ->type_name(ValueName::priority);
}

void defineSound(CLI::App &app, Options &options)
{
    CLI::App *sound = addCommand(
        app, options, Options::Command::Sound, "sound", "Play a sound notification",
        "The sound is queued by its priority; while it is heard, the music steps back. FILE is a "
        "sound file, a file: or http: URI, or - for a sound file on standard input. Prints the id "
        "of the sound once it is queued, and ends.\n\n"
        "With --wait the program ends when the sound does, and its exit code tells how. "
        "Interrupting it cancels the sound.\n\n"
        "A sound with --loop is heard until it is cancelled, and ends when the program does, "
        "which therefore goes on until it is interrupted.",
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
    sound->add_option("--id", options.id, "What the sound is called, to cancel it by (a new one)")
        ->type_name(ValueName::id);
    addPriority(*sound, options);
    sound->add_flag("--loop", options.loop, "Repeat the sound until it is cancelled");
    sound
        ->add_option("--stream", options.streamFormat,
                     "FILE is a stream of this media type: a FIFO, a file or a URI")
        ->type_name(ValueName::format);
    sound->add_flag("-w,--wait", options.wait, "End when the sound does, and tell how");
}

void defineShow(CLI::App &app, Options &options)
{
    CLI::App *show = addCommand(
        app, options, Options::Command::Show, "show", "Show a message on the display",
        "The message is queued by its priority and shown for its time. Prints its number once it "
        "is queued, and ends.\n\n"
        "With --wait the program ends when the message is closed, and its exit code tells how. "
        "Interrupting it closes the message.",
        "  tavo show 'The door is open'\n"
        "  tavo show --priority high --timeout 10000 Door 'Somebody rings'\n"
        "  tavo show --timeout 0 --wait Maintenance 'Take it away when you are done'");
    show->add_option(ValueName::title, options.title, "The message's title")
        ->required()
        ->type_name(ValueName::title);
    show->add_option(ValueName::message, options.message, "The message's text")
        ->type_name(ValueName::message);
    show->add_option("-t,--timeout", options.timeout,
                     "How many milliseconds it is shown, 0: until it is closed (as the host is "
                     "configured)")
        ->check(notNegative())
        ->type_name(ValueName::milliseconds);
    addPriority(*show, options);
    show->add_flag("-w,--wait", options.wait, "End when the message is closed, and tell how");
}

void defineCancel(CLI::App &app, Options &options)
{
    CLI::App *cancel = addCommand(
        app, options, Options::Command::Cancel, "cancel", "End a sound, or take a message away",
        "What begins with a slash is the path of a message, as tavo list shows it. A number is "
        "that of a message or, where none is open by it, the id of a sound. Anything else is the "
        "id of a sound, as tavo sound prints it. Where there is nothing by the name, the exit "
        "code is 1.",
        "  tavo cancel bell\n"
        "  tavo cancel 17\n"
        "  tavo cancel \"$(tavo list --json | jq -r '.messages[0].path')\"");
    const auto check = [](const std::string &text) {
        return text.empty() ? "must not be empty" : std::string();
    };
    cancel
        ->add_option(ValueName::idOrPath, options.id,
                     "The sound's id, the message's number or its path")
        ->required()
        ->check(CLI::Validator(check, ""))
        ->type_name(ValueName::idOrPath);
}

void defineList(CLI::App &app, Options &options)
{
    CLI::App *list = addCommand(
        app, options, Options::Command::List, "list", "List the messages on the display",
        "One line a message: its place, its path, its title and its text, parted by tabs where the "
        "output is no terminal. The first is on display, the others wait. Sounds that wait are not "
        "in the model and can't be listed; tavo status tells whether one is heard.",
        "  tavo list\n"
        "  tavo list --count 3 --json");
    list->add_option("-n,--count", options.count, "How many to list at most (100)")
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
