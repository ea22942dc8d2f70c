// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// The program's exit codes: those of sysexits.h. Documented in docs/display.md.
enum class ExitCode {
    Ok = 0,
    Usage = 64,
    Unavailable = 69,
    AlreadyRunning = 75,
    Configuration = 78,
};

/// Why the program can't go on: the code to exit with, and what to print.
struct ExitFailure
{
    ExitCode code;
    QString reason;
};
