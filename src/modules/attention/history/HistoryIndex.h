// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "HistoryEntry.h"
#include "Sqlite.h"

#include <optional>
#include <vector>

/// The index of the words in a history's entries, in the same database.
///
/// Owned by HistoryFile and used in its thread. Everything throws HistoryError.
///
/// The index of some thousand entries is a table of its own, a block. A search begins with the newest
/// block and often needs no other, so its time does not grow with the history. Looking up words that
/// begin in the same way takes as long as a block is large, before the first is found. Old entries
/// leave the index with their whole block, which takes much less writing than to remove each.
class HistoryIndex
{
public:
    explicit HistoryIndex(Sqlite &database);

    /// Makes what is needed in a new database.
    static void create(Sqlite &database);

    void add(qint64 number, const HistoryEntry &entry);

    /// Removes the oldest block if all its entries have lower numbers.
    void removeBefore(qint64 number);

    /// To be called when a transaction has been rolled back.
    void rolledBack();

    /// What must be found; empty if the index can't help.
    static QString expression(const HistoryQuery &query);

    /// The blocks that have entries with lower numbers, newest first.
    std::vector<qint64> blocks(qint64 before);

    /// Selects entries of a block, newest first. The first parameter is the number that they must be below, the
    /// second is the expression. Some that are found are to be left out.
    SqliteStatement search(qint64 block, const char *select);

    /// The lowest number of a block.
    static qint64 firstOf(qint64 block);

private:
    void open(qint64 block);

    Sqlite &m_database;
    SqliteStatement m_blocks;
    SqliteStatement m_oldest;
    SqliteStatement m_remove;
    qint64 m_open = -1; ///< the block of m_insert
    std::optional<SqliteStatement> m_insert;
};
