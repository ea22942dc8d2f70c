// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/sqlite/Sqlite.h"
#include "HistoryEntry.h"

#include <optional>
#include <vector>

/// The index of the words in a history's entries, in the same database.
///
/// Owned by HistoryFile and used in its thread. Everything throws SqliteError.
///
/// The index of some thousand entries is a table of its own, a block. A search begins with the newest
/// block and often needs no other, so its time does not grow with the history. Looking up words that
/// begin in the same way takes as long as a block is large, before the first is found. Old entries
/// leave the index with their whole block, which takes much less writing than to remove each.
///
/// A block is known by its first number, and ends where the next one begins.
class HistoryIndex
{
public:
    /// A block may take this many bytes.
    HistoryIndex(Sqlite &database, qint64 maxBlockBytes);

    /// Makes what is needed in a new database.
    static void create(Sqlite &database);

    /// Adds an entry that takes this many bytes, with a higher number than all others.
    void add(qint64 number, const HistoryEntry &entry, qint64 bytes);

    /// Removes the blocks in which no entry has a number that is higher than this.
    void removeUpTo(qint64 number);

    /// To be called before a transaction is committed.
    void prepareCommit();

    /// To be called when a transaction has been rolled back.
    void rolledBack();

    /// What must be found; empty if the index can't help.
    static QString expression(const HistoryQuery &query);

    /// The blocks that have entries with lower numbers, newest first.
    std::vector<qint64> blocks(qint64 before);

    /// Selects entries of a block, newest first. The first parameter is the number that they must be below, the
    /// second is the expression. Some that are found are to be left out.
    SqliteStatement search(qint64 block, const char *select);

private:
    void openNewest();
    void open(qint64 block, qint64 bytes);
    void makeBlock(qint64 number);

    /// The oldest block, if no entry in it has a number that is higher than this.
    std::optional<qint64> emptyBlock(qint64 number);

    Sqlite &m_database;
    const qint64 m_maxBlockBytes;
    SqliteStatement m_blocks;
    SqliteStatement m_newest;
    SqliteStatement m_oldest;
    SqliteStatement m_remove;
    SqliteStatement m_setBytes;

    std::optional<SqliteStatement> m_insert; ///< into the newest block
    qint64 m_block = 0;                      ///< of m_insert
    qint64 m_bytes = 0;                      ///< in this block
};
