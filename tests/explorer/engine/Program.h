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

/// An option with a number that only this explorer has.
struct NumberOption
{
    std::string name; ///< without its dashes
    int value;        ///< the default
    int min;
    int max;
    std::string help;
};

/// The command line's options.
struct Options
{
    Bounds bounds;
    std::string module;
    std::vector<NumberOption> own;      ///< the explorer's own options
    std::map<std::string, int> numbers; ///< their values, by name
    bool replays = false;
    Sequence replay;
};

/// An explorer. main() makes one and returns run()'s result.
struct Program
{
    std::string what;   ///< the line that --help begins with
    std::string module; ///< the default library
    std::vector<NumberOption> numbers;
    std::function<std::unique_ptr<System>(const Options &)> makeSystem;

    /// Returns the exit status: 0 nothing found, 1 findings (printed), 2 wrong usage.
    int run(int argc, char **argv) const;
};

} // namespace exploration
