// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/sqlite/Sqlite.h"
#include "HistoryEntry.h"

#include <QElapsedTimer>

// How entries are read from the rows of the history's file.

/// Numbers in the file, and those of a session, are never further from 0. Leaves room for the shift.
constexpr qint64 maxHistoryNumber = qint64(1) << 60;

constexpr int privateHistoryFlag = 1;
constexpr int mustSeeHistoryFlag = 2;
constexpr int leftHistoryFlag = 4;

/// What statements select whose rows are entries.
#define SELECTED_OF_ENTRIES                                                                        \
    "entries.number, entries.id, entries.time, entries.source, entries.application, "              \
    "entries.category, entries.\"group\", entries.priority, entries.title, entries.text, "         \
    "entries.state, entries.action, entries.endTime, entries.flags"

constexpr int selectedOfEntries = 14; ///< columns

/// The beginning of such statements.
#define SELECT_ENTRIES "SELECT " SELECTED_OF_ENTRIES " FROM "

/// The entry of a row, whose number is higher by the shift.
HistoryEntry historyEntryOf(const SqliteRows &rows, qint64 shift);

/// Puts rows into a page until it is full or its time is over. Throws SqliteError.
class HistoryPageReader
{
public:
    HistoryPageReader(const HistoryQuery &query, qint64 before, qint64 shift);

    /// Returns whether there is room and time for more.
    bool read(SqliteRows &&rows);

    /// To be called when nothing from this number on is left to read. Returns whether there is time for more.
    bool goOn(qint64 next);

    const HistoryPage &page() const { return m_page; }

private:
    /// Never before something has been read: otherwise the next page would be the same.
    bool isLate() const;

    const HistoryQuery &m_query;
    qint64 m_before; ///< the next entry's number must be lower
    const qint64 m_shift;
    const int m_limit;
    const int m_maxBytes; ///< of the page
    QElapsedTimer m_elapsed;
    bool m_hasRead = false;
    int m_bytes = 0; ///< in the page
    HistoryPage m_page;
};
