// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// The program's exit codes, documented in docs/cli.md and, by exitCodeTexts, in the man page.
enum class ExitCode {
    Ok = 0,
    /// The host replied with an error. cancel: nothing has that name. doctor: something is missing.
    /// rules check, rules list: the file is wrong. fleet: a device answered with an error, or there was
    /// nothing to cancel.
    Refused = 1,

    // With --wait: how the sound, message or notification ended.
    Cancelled = 10,
    Dismissed = 11,
    Failed = 12,
    EndUnknown = 13,
    Silenced = 14,

    // As in sysexits.h.
    Usage = 64,
    NoInput = 66,
    Unavailable = 69,
    SystemError = 71,
    TimedOut = 75,

    /// Ended by a signal: this plus its number, as a shell reports it.
    SignalBase = 128,
};

/// Why a command failed: the code to exit with, and what to print.
struct ExitFailure
{
    ExitCode code;
    QString reason;
};

struct ExitCodeText
{
    const char *code;
    const char *meaning;
};

inline constexpr ExitCodeText exitCodeTexts[] = {
    {"0", "Success. With --wait: the sound played to its end, the message was shown for its "
          "timeout, or a person chose an action."},
    {"1", "The host refused the request. cancel: nothing has that name. doctor: something is "
          "missing. rules check, rules list: the file is wrong. fleet: a device answered with an "
          "error, or there was nothing to cancel."},
    {"10", "With --wait: the sound was cancelled, or the message was closed by a program."},
    {"11", "With --wait: a person dismissed the message."},
    {"12", "With --wait: the sound could not be played, or the message not be shown; the host's "
           "log says why."},
    {"13", "With --wait: the host went away, or did not report the end."},
    {"14", "With --wait: rules or do-not-disturb kept the notification from people."},
    {"64", "Wrong arguments."},
    {"66", "The file, or standard input, can't be read."},
    {"69", "The bus or the broker can't be reached, or no host is on the bus."},
    {"71", "An operation of the operating system failed."},
    {"75", "The bus or the host did not reply in time. fleet: a device did not answer in time."},
    {"130", "Interrupted by SIGINT (Ctrl-C)."},
    {"143", "Ended by SIGTERM."},
};
