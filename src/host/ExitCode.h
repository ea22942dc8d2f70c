// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <variant>

/// What the host tells whoever started it. The numbers are those of sysexits.h, so that a service
/// manager's log names most of them. Documented in docs/host.md and in --help.
enum class ExitCode {
    Ok = 0,
    Usage = 64,
    ModuleUnavailable = 69,
    WorkerFailed = 70,
    SystemError = 71,
    Configuration = 78,
    /// A second signal while stopping: this plus the signal's number, as a shell would report it.
    SignalBase = 128,
};

/// Why the host can't go on: the code to exit with and a text for the person who started it.
struct Failure
{
    ExitCode code;
    QString text;
};

/// What a step gives, or why it could not.
template <typename Value>
using Result = std::variant<Value, Failure>;
