// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// The program's exit codes: those of sysexits.h, so that a service manager's log names most of
/// them. Documented in docs/host.md and in --help.
enum class ExitCode {
    Ok = 0,
    Usage = 64,
    ModuleUnavailable = 69,
    WorkerFailed = 70,
    SystemError = 71,
    Configuration = 78,
};

/// Why the host can't go on: the code to exit with, and what to print.
struct ExitFailure
{
    ExitCode code;
    QString reason;
};
