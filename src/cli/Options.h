// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

/// The arguments of the program. Strings hold bytes: the name of a file need not be UTF-8.
struct Options
{
    enum class Command {
        Sound,
        Show,
        Cancel,
        List,
        Notify,
        Say,
        History,
        Missed,
        DoNotDisturb,
        Rules,
        Fleet,
        Watch,
        Get,
        Rows,
        Call,
        Tree,
        Status,
        Doctor,
        Generate
    };

    Command command = Command::Status;

    // For every command.
    std::string bus = "session";
    bool json = false;
    double replyTimeoutSeconds = 10;

    // sound
    std::string file; ///< of notify and rules too
    std::string id;   ///< of cancel and notify too
    std::string streamFormat;
    bool loop = false;

    // show, notify and rules
    std::string title; ///< of rules check, the file
    std::string message;
    int timeout = -1; ///< in milliseconds; -1: the default

    // notify, say and rules
    std::string application = "tavo";
    std::string category;
    std::string group;
    std::string icon;
    std::string speech;               ///< of say too
    std::string language;             ///< of speech
    std::vector<std::string> actions; ///< "key=label"
    bool isTransient = false;
    std::string rulesAction;

    // dnd
    std::string state; ///< "on", "off", "until" or empty
    std::string until;

    // fleet, besides those of show
    std::string fleetAction; ///< "list", "watch" or the name of a call
    std::string fleetArgument;
    std::vector<std::string> fleetGroups;
    std::vector<std::string> fleetDevices;
    std::string at;
    bool everywhere = false;
    std::string configuration; ///< a file
    std::string broker;        ///< an URL
    std::string ca;
    std::string certificate;
    std::string key;
    std::string user;
    std::string passwordFile;

    // history and missed
    std::string search;
    std::string source; ///< of notify and rules too
    int limit = 100;
    bool missed = false;
    bool seen = false;

    // sound, show, notify and rules
    std::string priority = "normal";
    bool wait = false;

    // get, rows, call, tree, watch
    std::string path;
    std::string value; ///< JSON
    int first = 0;
    int count = -1;

    // The hidden option that writes the man page and the completions.
    std::string generate;
};
