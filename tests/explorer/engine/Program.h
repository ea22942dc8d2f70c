// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Search.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace exploration {

/// A number that a program takes beyond those that every explorer takes.
struct NumberOption
{
    std::string name; ///< without its dashes
    int value;        ///< unless given
    int least;
    int most;
    std::string help;
};

/// What an explorer was called with.
struct Options
{
    Bounds bounds;
    std::string module;
    std::vector<NumberOption> own;      ///< those that the program takes beyond the common ones
    std::map<std::string, int> numbers; ///< their values, by name
    bool replays = false;
    Sequence replay;
};

/// An explorer: a main() makes one and returns what run() returns.
struct Program
{
    std::string what;   ///< the line that --help begins with
    std::string module; ///< the library, unless given
    std::vector<NumberOption> numbers;
    std::function<std::unique_ptr<System>(const Options &)> makeSystem;

    /// 0: nothing was found; 1: something was, and is printed; 2: a wrong call.
    int run(int argc, char **argv) const;
};

} // namespace exploration
