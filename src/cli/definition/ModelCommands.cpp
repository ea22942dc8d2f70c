// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"

namespace {
OptionDefinition path(const char *description, bool isRequired)
{
    return {{}, ValueName::path, description, &Options::path, {}, isRequired};
}

CommandDefinition watch()
{
    CommandDefinition command{Options::Command::Watch, "watch", "Print changes until interrupted"};
    command.text = commandText(
        "Prints what is at PATH, and then a line for each change: a new value, rows that were "
        "inserted or removed, a node that appeared or disappeared. Without PATH, watches the "
        "sounds, the display, the main audio and the power manager. If the host goes away, waits "
        "for it to come back. With --json, each line is an object.",
        "  tavo watch\n"
        "  tavo watch /player/mainAudio/state\n"
        "  tavo watch --json /notifications/display/queue | jq .rows");
    command.positionals = {path("The node to watch", false)};
    return command;
}

CommandDefinition get()
{
    CommandDefinition command{Options::Command::Get, "get", "Read a node's value"};
    command.text = commandText(
        "Prints a string or a number unchanged, and a record as one line for each field.",
        "  tavo get /notifications/player/isPlaying\n"
        "  tavo get --json /player/mainAudio/state");
    command.positionals = {path("The node", true)};
    return command;
}

CommandDefinition rows()
{
    CommandDefinition command{Options::Command::Rows, "rows", "Read the rows of a list"};
    command.text = commandText(
        "Prints each row as tavo get prints a value, with a blank line between records.",
        "  tavo rows /notifications/display/queue\n"
        "  tavo rows --first 10 --count 5 --json /notifications/display/queue");
    command.positionals = {path("The node", true)};
    command.options = {{{"--first"},
                        ValueName::number,
                        "Index of the first row to read (0)",
                        &Options::first,
                        notNegative()},
                       {{"-n", "--count"},
                        ValueName::number,
                        "Read at most N rows (all)",
                        &Options::count,
                        notNegative()}};
    return command;
}

CommandDefinition call()
{
    CommandDefinition command{Options::Command::Call, "call", "Send a request and print the reply"};
    command.text = commandText(
        "JSON is the value to send; - reads it from standard input. Without JSON, the request has "
        "no value. An integer is sent as an integer, any other number as a double, an object as a "
        "record. Bytes are written as {\"base64\": \"...\"}, in replies too.",
        "  tavo call /player/mainAudio/volume 0.4\n"
        "  tavo call /player/mainAudio/play '{\"string\": \"/srv/music/evening.flac\"}'\n"
        "  tavo call /powerManager/standby");
    command.positionals = {
        path("The node", true),
        {{}, ValueName::json, "The value to send, or - for standard input", &Options::value}};
    return command;
}

CommandDefinition tree()
{
    CommandDefinition command{Options::Command::Tree, "tree", "List the nodes of the model"};
    command.text = commandText(
        "Prints a tree on a terminal. Elsewhere prints one line for each node: its path, its kind "
        "(value, list or request) and its title, separated by tabs.",
        "  tavo tree\n"
        "  tavo tree /player\n"
        "  tavo tree | grep -w request");
    command.positionals = {path("The node to begin at (/)", false)};
    return command;
}
} // namespace

std::vector<CommandDefinition> modelCommands()
{
    return {watch(), get(), rows(), call(), tree()};
}
