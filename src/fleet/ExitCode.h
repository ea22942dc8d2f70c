// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// The program's exit codes: those of sysexits.h. Documented in docs/fleet.md.
enum class ExitCode {
    Ok = 0,
    Usage = 64,
    Store = 73,
    Configuration = 78,
};
