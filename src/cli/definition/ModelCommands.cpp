// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Definition.h"
#include <CLI/Option.hpp>

namespace {
CLI::Option *addPath(CLI::App &command, Options &options, const char *description)
{
    return command.add_option(ValueName::path, options.path, description)
        ->type_name(ValueName::path);
}

void defineWatch(CLI::App &app, Options &options)
{
    CLI::App *watch = addCommand(
        app, options, Options::Command::Watch, "watch", "Print changes until interrupted",
        "Prints what is at PATH, and then a line for each change: a new value, rows that were "
        "inserted or removed, a node that appeared or disappeared. Without PATH, watches the "
        "sounds, the display, the main audio and the power manager. If the host goes away, waits "
        "for it to come back. With --json, each line is an object.",
        "  tavo watch\n"
        "  tavo watch /player/mainAudio/state\n"
        "  tavo watch --json /notifications/display/queue | jq .rows");
    addPath(*watch, options, "The node to watch");
}

void defineGet(CLI::App &app, Options &options)
{
    CLI::App *get = addCommand(
        app, options, Options::Command::Get, "get", "Read a node's value",
        "Prints a string or a number unchanged, and a record as one line for each field.",
        "  tavo get /notifications/player/isPlaying\n"
        "  tavo get --json /player/mainAudio/state");
    addPath(*get, options, "The node")->required();
}

void defineRows(CLI::App &app, Options &options)
{
    CLI::App *rows =
        addCommand(app, options, Options::Command::Rows, "rows", "Read the rows of a list",
                   "Prints each row as tavo get prints a value, with a blank line between records.",
                   "  tavo rows /notifications/display/queue\n"
                   "  tavo rows --first 10 --count 5 --json /notifications/display/queue");
    addPath(*rows, options, "The node")->required();
    rows->add_option("--first", options.first, "Index of the first row to read (0)")
        ->check(notNegative())
        ->type_name(ValueName::number);
    rows->add_option("-n,--count", options.count, "Read at most N rows (all)")
        ->check(notNegative())
        ->type_name(ValueName::number);
}

void defineCall(CLI::App &app, Options &options)
{
    CLI::App *call = addCommand(
        app, options, Options::Command::Call, "call", "Send a request and print the reply",
        "JSON is the value to send; - reads it from standard input. Without JSON, the request has "
        "no value. An integer is sent as an integer, any other number as a double, an object as a "
        "record. Bytes are written as {\"base64\": \"...\"}, in replies too.",
        "  tavo call /player/mainAudio/volume 0.4\n"
        "  tavo call /player/mainAudio/play '{\"string\": \"/srv/music/evening.flac\"}'\n"
        "  tavo call /powerManager/standby");
    addPath(*call, options, "The node")->required();
    call->add_option(ValueName::json, options.value, "The value to send, or - for standard input")
        ->type_name(ValueName::json);
}

void defineTree(CLI::App &app, Options &options)
{
    CLI::App *tree = addCommand(
        app, options, Options::Command::Tree, "tree", "List the nodes of the model",
        "Prints a tree on a terminal. Elsewhere prints one line for each node: its path, its kind "
        "(value, list or request) and its title, separated by tabs.",
        "  tavo tree\n"
        "  tavo tree /player\n"
        "  tavo tree | grep -w request");
    addPath(*tree, options, "The node to begin at (/)");
}
} // namespace

void defineModelCommands(CLI::App &app, Options &options)
{
    defineWatch(app, options);
    defineGet(app, options);
    defineRows(app, options);
    defineCall(app, options);
    defineTree(app, options);
}
