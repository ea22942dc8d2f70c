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
        app, options, Options::Command::Watch, "watch", "Follow what changes, until interrupted",
        "Prints a line for what is there and for each change after that: a value, rows that come "
        "and go, a node that appears or leaves. Without PATH it follows the sounds, the display, "
        "the main audio and the power manager. A host that goes is waited for. With --json each "
        "line is an object.",
        "  tavo watch\n"
        "  tavo watch /player/mainAudio/state\n"
        "  tavo watch --json /notifications/display/queue | jq .rows");
    addPath(*watch, options, "The node to follow");
}

void defineGet(CLI::App &app, Options &options)
{
    CLI::App *get =
        addCommand(app, options, Options::Command::Get, "get", "Read a node's value",
                   "A text or a number is printed as it is, a record as a line a field.",
                   "  tavo get /notifications/player/isPlaying\n"
                   "  tavo get --json /player/mainAudio/state");
    addPath(*get, options, "The node")->required();
}

void defineRows(CLI::App &app, Options &options)
{
    CLI::App *rows = addCommand(
        app, options, Options::Command::Rows, "rows", "Read the rows of a list",
        "One row after the other, each as tavo get prints a value, with a blank line between "
        "records.",
        "  tavo rows /notifications/display/queue\n"
        "  tavo rows --first 10 --count 5 --json /notifications/display/queue");
    addPath(*rows, options, "The node")->required();
    rows->add_option("--first", options.first, "The first row to read, from 0 on (0)")
        ->check(notNegative())
        ->type_name(ValueName::number);
    rows->add_option("-n,--count", options.count, "How many rows to read at most (all)")
        ->check(notNegative())
        ->type_name(ValueName::number);
}

void defineCall(CLI::App &app, Options &options)
{
    CLI::App *call = addCommand(
        app, options, Options::Command::Call, "call", "Send a request and print the answer",
        "JSON is the request's value; without it the request carries none, and - reads it from "
        "standard input. A whole number is sent as an integer, an object as a record. Bytes are "
        "written as {\"base64\": \"...\"}, in answers too.",
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
        "On a terminal as a tree. Elsewhere a line a node, separated by tabs: path, kind "
        "(value, list or request) and title.",
        "  tavo tree\n"
        "  tavo tree /player\n"
        "  tavo tree | grep -w request");
    addPath(*tree, options, "Where to begin (/)");
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
