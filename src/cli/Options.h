// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

/// The arguments of the program. Strings hold bytes: the name of a file need not be UTF-8.
struct Options
{
    enum class Command {
        Sound,
        Show,
        Cancel,
        List,
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
    std::string file;
    std::string id; ///< of cancel too
    std::string streamFormat;
    bool loop = false;

    // show
    std::string title;
    std::string message;
    int timeout = -1; ///< in milliseconds; -1: the host's default

    // sound and show
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
