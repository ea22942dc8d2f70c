// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryRows.h"

#include "base/sqlite/SqliteError.h"

#include <algorithm>

namespace {
constexpr qint64 maxReadMs = 50; // then a page ends: others wait

/// Times the entries that were asked for: then a page ends. The usual 50 fit into the smallest message that
/// the module dbus can be told to send (65536 bytes), and the most, 200, into the largest that it sends by
/// default.
constexpr int maxBytesPerEntry = 1280;

/// In a message, as the module dbus counts them.
int bytesOf(const HistoryEntry &entry)
{
    constexpr int namesAndTypesOfFields = 720;
    int bytes = namesAndTypesOfFields;
    for (const QString &text : {entry.id, entry.source, entry.application, entry.category,
                                entry.title, entry.text, entry.action}) {
        bytes += text.toUtf8().size();
    }
    return bytes;
}
} // namespace

HistoryEntry historyEntryOf(const SqliteRows &rows, qint64 shift)
{
    int column = 0;
    HistoryEntry entry;
    entry.number = qBound(-maxHistoryNumber, rows.number(column++), maxHistoryNumber) - shift;
    entry.id = rows.string(column++);
    entry.time = rows.number(column++);
    entry.source = rows.string(column++);
    entry.application = rows.string(column++);
    entry.category = rows.string(column++);
    entry.group = rows.string(column++);
    entry.priority = int(rows.number(column++));
    entry.title = rows.string(column++);
    entry.text = rows.string(column++);
    entry.state = HistoryEntry::State(rows.number(column++));
    entry.action = rows.string(column++);
    entry.endTime = rows.number(column++);
    const qint64 flags = rows.number(column++);
    entry.isPrivate = flags & privateHistoryFlag;
    entry.mustSee = flags & mustSeeHistoryFlag;
    entry.wasLeft = flags & leftHistoryFlag;
    return entry;
}

HistoryPageReader::HistoryPageReader(const HistoryQuery &query, qint64 before, qint64 shift)
    : m_query(query)
    , m_before(before - shift)
    , m_shift(shift)
    , m_limit(qBound(1, query.limit, HistoryQuery::maxLimit))
    , m_maxBytes(maxBytesPerEntry * std::max(m_limit, HistoryQuery().limit))
{
    m_elapsed.start();
}

bool HistoryPageReader::read(SqliteRows &&rows)
{
    while (rows.next()) {
        const HistoryEntry entry = historyEntryOf(rows, m_shift);
        // In a damaged file; a page must never lead back to one before it.
        if (entry.number >= m_before) {
            throw SqliteError(SqliteError::Kind::Damaged,
                              QStringLiteral("its entries are in a wrong order"));
        }
        m_before = entry.number;
        // One of the conditions has selected the rows.
        const bool isWanted = (m_query.source.isEmpty() || entry.source == m_query.source) &&
                              (!m_query.onlyMissed || entry.isMissed());
        m_bytes += isWanted ? bytesOf(entry) : 0;
        if (m_page.entries.size() == m_limit || isLate() ||
            (m_bytes > m_maxBytes && !m_page.entries.isEmpty())) {
            m_page.next = entry.number + 1;
            return false;
        }
        m_hasRead = true;
        if (isWanted) {
            m_page.entries.append(entry);
        }
    }
    return true;
}

bool HistoryPageReader::goOn(qint64 next)
{
    m_hasRead = true;
    if (isLate()) {
        m_page.next = next - m_shift;
    }
    return !isLate();
}

bool HistoryPageReader::isLate() const
{
    return m_hasRead && m_elapsed.hasExpired(maxReadMs);
}
