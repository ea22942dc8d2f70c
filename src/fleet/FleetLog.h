// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// Writes records to standard error: one line each, with its level if standard error is the journal.
namespace FleetLog {
void error(const QString &text);
void warning(const QString &text);
void info(const QString &text);
} // namespace FleetLog
