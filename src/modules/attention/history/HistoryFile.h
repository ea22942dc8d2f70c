// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/sqlite/Sqlite.h"
#include "HistoryIndex.h"
#include "HistorySteps.h"

#include <memory>
#include <optional>

/// The database of the history.
///
/// Owned by HistoryWriter and used in its thread. Everything throws SqliteError; then the transaction
/// must be rolled back, or the object destroyed. Numbers are those of the session: see setShift().
class HistoryFile
{
public:
    /// Opens the database, or makes it. The file's name is ":memory:" for one in memory.
    HistoryFile(const QString &file, const HistorySettings &settings);
    ~HistoryFile();

    /// The highest number that was ever in the file, not changed by the shift; 0 if it is new.
    qint64 lastNumber() const { return m_totals.last; }

    /// The numbers in the file are higher by this than those of the session.
    void setShift(qint64 shift) { m_shift = shift; }

    /// Applies a step within a transaction, which is begun if there is none.
    void apply(const HistoryStep &step);

    /// Removes some of the entries that are beyond the limits, and writes the transaction to the disk.
    void commit();

    /// Gives up all steps since the last commit().
    void rollback();

    /// Whether there are more entries than the settings allow, so that commit() should be called again.
    bool isOverLimit() const;

    /// How many entries nobody has seen.
    int missed() const { return int(m_totals.missed); }

    /// A page, from everything that has been applied.
    HistoryPage page(const HistoryQuery &query);

    /// The open entries with mustSee as they are now, also those that have been removed to make room.
    QVector<HistoryEntry> leftOpen();

    /// Whether there is something for HistoryLeftEnd to end.
    bool hasLeft();

private:
    struct Statements;
    struct Totals
    {
        qint64 last = 0; ///< number
        qint64 entries = 0;
        qint64 bytes = 0; ///< see bytesOf()
        qint64 missed = 0;
    };

    void write(const HistoryEntry &entry);
    void write(const HistoryChange &change);
    void write(const HistoryReplacement &replacement);
    void write(const HistorySeen &seen);
    void write(const HistoryLeftEnd &left);
    static void insert(SqliteStatement &statement, qint64 number, const HistoryEntry &entry,
                       qint64 bytes);

    /// Remembers the user of one that may come back.
    void own(qint64 number, const HistoryEntry &entry);

    /// One does not come back.
    void forget(qint64 number);
    void removeOldest();

    /// The number of the oldest entry that can have come at the time it has, if that is before the oldest
    /// time to keep; else 0. What came before it is older, even if a wrong clock gave it a time to come.
    qint64 lastTooOld(qint64 now, qint64 oldest);
    void readTotals();
    void begin();
    qint64 numberInFile(qint64 number) const;

    Sqlite m_database;
    const HistorySettings m_settings;
    std::unique_ptr<Statements> m_statements;
    std::optional<HistoryIndex> m_index;
    Totals m_totals;
    int m_added = 0;          ///< entries since the last commit()
    qint64 m_oldestDated = 0; ///< entries with lower numbers have times to come
    qint64 m_shift = 0;
};
