// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"

#include <string>

/// Output that replaces a command: help, the version, or what is wrong with the arguments.
struct CommandLineEnd
{
    ExitCode code;
    std::string text;
};

/// Reads the arguments, which begin with the program's name.
Result<Options, CommandLineEnd> readCommandLine(int argc, const char *const *argv);
