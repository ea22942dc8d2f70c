// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"

#include <memory>
#include <string>

namespace CLI {
class App;
}

/// Defines the commands, the options and their descriptions: the source of --help, the man page and
/// the completions. Parsing writes to the options, which must outlive the definition.
std::unique_ptr<CLI::App> defineCommandLine(Options &options);

/// Output that replaces a command: help, the version, or what is wrong with the arguments.
struct CommandLineEnd
{
    ExitCode code;
    std::string text;
};

/// Reads the arguments, which begin with the program's name.
Result<Options, CommandLineEnd> readCommandLine(int argc, const char *const *argv);
