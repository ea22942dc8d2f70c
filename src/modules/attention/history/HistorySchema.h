// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/sqlite/Sqlite.h"

#include <QString>

// The tables of the history's file. Everything throws SqliteError.

/// Throws if the file belongs to another program or a newer version. SQLite changes files of others as soon
/// as it reads them, so this reads the first bytes without it.
void checkHistoryHeader(const QString &name);

/// Sets the database up, and makes the tables if it is empty. Throws if it belongs to another program
/// or a newer version.
void setUpHistory(Sqlite &database);
