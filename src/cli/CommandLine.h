// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/ExitCode.h"
#include "cli/Options.h"

#include <memory>
#include <string>
#include <variant>

namespace CLI {
class App;
}

/// The program's commands and options with their texts: what reads the arguments, what --help shows
/// and what the man page and the completions are made of. Reading puts the arguments into the
/// options, which must outlive the definition.
std::unique_ptr<CLI::App> defineCommandLine(Options &options);

/// What ends the program before there is anything to do: help, the version, wrong arguments.
struct CommandLineEnd
{
    ExitCode code;
    std::string text;
};

/// Reads the arguments, the program's own name first.
std::variant<Options, CommandLineEnd> readCommandLine(int argc, const char *const *argv);
