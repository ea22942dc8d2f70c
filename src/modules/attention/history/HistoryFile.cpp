// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryFile.h"

#include "base/sqlite/SqliteError.h"
#include "HistoryRows.h"
#include "HistorySchema.h"

#include <QDateTime>

#include <vector>

namespace {
constexpr int maxRemoved = 100;      // more than it adds, in one transaction, so that each is short
constexpr qint64 maxFreePages = 256; // before the file is made shorter
constexpr int blocksInFile = 8;   // at least, so that the file is never much larger than it may be
constexpr int maxLeftOpen = 1000; // nobody can see more of them
constexpr qint64 msPerDay = 86'400'000;

// Of the table of owners.
#define DOES_NOT_COME_BACK                                                                         \
    "number NOT IN (SELECT number FROM kept) AND number NOT IN (SELECT number FROM entries "       \
    "INDEXED BY entries_open WHERE endTime = 0 AND flags & 2)"

#define SELECT_OPEN_MUST_SEE                                                                       \
    "SELECT * FROM entries INDEXED BY entries_open WHERE endTime = 0 AND flags & 2"

// The newest row of each user, then the second of each, and so on. So the many rows of one push out none of
// another's few.
#define IN_TURN(rows, limit)                                                                       \
    "(SELECT open.*, coalesce(owners.user, '') AS user, ROW_NUMBER() OVER "                        \
    "(PARTITION BY owners.user ORDER BY number DESC) AS turn FROM (" rows ") AS open "             \
    "LEFT JOIN owners USING(number) ORDER BY turn, number DESC LIMIT " limit ")"

#define ENTRY_VALUES "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"

/// About what an entry takes in the file.
qint64 bytesOf(const HistoryEntry &entry)
{
    constexpr qint64 fixed = 100;
    qint64 indexed = 0;
    for (const QString *string : {&entry.source, &entry.application, &entry.title, &entry.text}) {
        indexed += string->toUtf8().size();
    }
    // The index of the words takes about as much as they do.
    return fixed + 2 * indexed + entry.id.size() + entry.category.size() + entry.group.size();
}
} // namespace

struct HistoryFile::Statements
{
    explicit Statements(Sqlite &database)
        : database(database)
    {
    }

    Sqlite &database;
    SqliteStatement begin{database, "BEGIN IMMEDIATE"};
    SqliteStatement commit{database, "COMMIT"};
    SqliteStatement rollback{database, "ROLLBACK"};
    SqliteStatement readTotals{database, "SELECT last, entries, bytes, missed FROM totals"};
    SqliteStatement writeTotals{database,
                                "UPDATE totals SET last = ?, entries = ?, bytes = ?, missed = ?"};
    SqliteStatement insert{database, "INSERT INTO entries " ENTRY_VALUES};
    SqliteStatement state{database, "SELECT state FROM entries WHERE number = ?"};
    SqliteStatement change{
        database, "UPDATE entries SET state = ?, action = ?, endTime = ? WHERE number = ?"};
    SqliteStatement see{database, "UPDATE entries INDEXED BY entries_missed SET state = ? "
                                  "WHERE state IN (5, 6) AND number <= ? AND number >= ?"};
    SqliteStatement leftOpen{database, "SELECT " SELECTED_OF_ENTRIES ", user FROM " IN_TURN(
                                           "SELECT * FROM kept UNION ALL " SELECT_OPEN_MUST_SEE
                                           " AND number NOT IN (SELECT number FROM kept)",
                                           "?") " AS entries ORDER BY number"};
    SqliteStatement left{database, "SELECT 1 FROM entries INDEXED BY entries_open "
                                   "WHERE endTime = 0 AND NOT flags & 2 UNION ALL "
                                   "SELECT 1 FROM owners WHERE " DOES_NOT_COME_BACK " LIMIT 1"};
    SqliteStatement missLeft{database, "UPDATE entries INDEXED BY entries_open "
                                       "SET endTime = ?, state = ?, flags = flags | ? "
                                       "WHERE endTime = 0 AND NOT flags & 2 AND state = ?"};
    SqliteStatement endLeft{database, "UPDATE entries INDEXED BY entries_open SET endTime = ? "
                                      "WHERE endTime = 0 AND NOT flags & 2"};
    SqliteStatement oldest{
        database, "SELECT number, time, bytes, state FROM entries ORDER BY number LIMIT ?"};
    SqliteStatement oldestDated{database,
                                "SELECT number, time FROM entries "
                                "WHERE number >= ? AND time <= ? ORDER BY number LIMIT 1"};
    // What it has become stays.
    SqliteStatement keep{database,
                         "INSERT OR IGNORE INTO kept " SELECT_OPEN_MUST_SEE " AND number <= ?"};
    SqliteStatement setMustSee{database,
                               "UPDATE entries SET flags = flags & ~2 | ? WHERE number = ?"};
    SqliteStatement insertKept{database, "INSERT OR REPLACE INTO kept " ENTRY_VALUES};
    SqliteStatement forgetKept{database,
                               "DELETE FROM kept WHERE number IN (SELECT number FROM " IN_TURN(
                                   "SELECT number FROM kept", "-1 OFFSET ?") ")"};
    SqliteStatement endKept{database, "DELETE FROM kept WHERE number = ?"};
    SqliteStatement own{database, "INSERT OR REPLACE INTO owners VALUES(?, ?)"};
    SqliteStatement disown{database, "DELETE FROM owners WHERE number = ?"};
    SqliteStatement disownLeft{database, "DELETE FROM owners WHERE " DOES_NOT_COME_BACK};
    SqliteStatement remove{database, "DELETE FROM entries WHERE number <= ?"};
    SqliteStatement newest{database, SELECT_ENTRIES "entries "
                                                    "WHERE number < ? ORDER BY number DESC"};
    SqliteStatement missed{database, SELECT_ENTRIES
                           "entries INDEXED BY entries_missed "
                           "WHERE state IN (5, 6) AND number < ? ORDER BY number DESC"};
};

HistoryFile::HistoryFile(const QString &file, const HistorySettings &settings)
    : m_database(file)
    , m_settings(settings)
{
    checkHistoryHeader(file);
    setUpHistory(m_database);
    m_statements = std::make_unique<Statements>(m_database);
    m_index.emplace(m_database, settings.maxBytes / blocksInFile);
    readTotals();
}

HistoryFile::~HistoryFile() = default;

qint64 HistoryFile::numberInFile(qint64 number) const
{
    return qBound(-maxHistoryNumber, number, maxHistoryNumber) + m_shift;
}

void HistoryFile::apply(const HistoryStep &step)
{
    begin();
    std::visit([this](const auto &alternative) { write(alternative); }, step);
}

void HistoryFile::begin()
{
    if (!m_database.isInTransaction()) {
        m_statements->begin.run();
    }
}

void HistoryFile::write(const HistoryEntry &entry)
{
    const qint64 number = numberInFile(entry.number);
    const qint64 bytes = bytesOf(entry);
    insert(m_statements->insert, number, entry, bytes);
    m_index->add(number, entry, bytes);
    ++m_added;
    m_totals.last = number;
    ++m_totals.entries;
    m_totals.bytes += bytes;
    m_totals.missed += entry.isMissed();
    own(number, entry);
}

void HistoryFile::own(qint64 number, const HistoryEntry &entry)
{
    if (entry.mustSee && !entry.user.isEmpty()) {
        m_statements->own.run(number, entry.user);
    }
}

void HistoryFile::insert(SqliteStatement &statement, qint64 number, const HistoryEntry &entry,
                         qint64 bytes)
{
    const int flags =
        (entry.isPrivate ? privateHistoryFlag : 0) | (entry.mustSee ? mustSeeHistoryFlag : 0);
    statement.run(number, entry.id, entry.time, entry.source, entry.application, entry.category,
                  entry.group, entry.priority, entry.title, entry.text, int(entry.state),
                  entry.action, entry.endTime, flags, bytes);
}

void HistoryFile::write(const HistoryReplacement &replacement)
{
    const HistoryEntry &entry = replacement.entry;
    const qint64 number = numberInFile(entry.number);
    m_statements->setMustSee.run(entry.mustSee ? mustSeeHistoryFlag : 0, number);
    if (entry.mustSee) {
        insert(m_statements->insertKept, number, entry, bytesOf(entry));
        m_totals.last = std::max(m_totals.last, number); // in a new file after a damaged one
        own(number, entry);
    } else {
        forget(number);
    }
}

void HistoryFile::forget(qint64 number)
{
    m_statements->endKept.run(number);
    m_statements->disown.run(number);
}

void HistoryFile::write(const HistoryChange &change)
{
    const qint64 number = numberInFile(change.number);
    if (change.endTime != 0) {
        forget(number);
    }
    HistoryEntry old;
    {
        SqliteRows rows(m_statements->state, number);
        if (!rows.next()) {
            return;
        }
        old.state = HistoryEntry::State(rows.number(0));
    }
    HistoryEntry now;
    now.state = change.state;
    m_statements->change.run(int(change.state), change.action, change.endTime, number);
    m_totals.missed += int(now.isMissed()) - int(old.isMissed());
}

void HistoryFile::write(const HistorySeen &seen)
{
    m_statements->see.run(int(HistoryEntry::State::Seen), numberInFile(seen.upTo),
                          numberInFile(seen.from));
    m_totals.missed -= m_database.changedRows();
}

void HistoryFile::write(const HistoryLeftEnd &left)
{
    // Nobody has closed what was open.
    m_statements->missLeft.run(left.time, int(HistoryEntry::State::Expired), leftHistoryFlag,
                               int(HistoryEntry::State::Shown));
    m_totals.missed += m_database.changedRows();
    m_statements->endLeft.run(left.time);
    m_statements->disownLeft.run();
}

void HistoryFile::commit()
{
    if (!m_database.isInTransaction() && !isOverLimit()) {
        return;
    }
    begin();
    removeOldest();
    m_index->prepareCommit();
    m_statements->writeTotals.run(m_totals.last, m_totals.entries, m_totals.bytes, m_totals.missed);
    m_statements->commit.run();
    m_added = 0;
}

void HistoryFile::rollback()
{
    // Some errors have already ended the transaction.
    if (m_database.isInTransaction()) {
        m_statements->rollback.run();
    }
    m_index->rolledBack();
    m_oldestDated = 0;
    m_added = 0;
    readTotals();
}

bool HistoryFile::isOverLimit() const
{
    return m_totals.entries > m_settings.maxEntries || m_totals.bytes > m_settings.maxBytes;
}

qint64 HistoryFile::lastTooOld(qint64 now, qint64 oldest)
{
    SqliteRows rows(m_statements->oldestDated, m_oldestDated, now);
    if (!rows.next()) {
        return 0;
    }
    m_oldestDated = rows.number(0);
    return rows.number(1) < oldest ? m_oldestDated : 0;
}

void HistoryFile::removeOldest()
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const qint64 oldest = now - m_settings.maxDays * msPerDay;
    const qint64 tooOld = lastTooOld(now, oldest);
    qint64 last = 0;
    {
        SqliteRows rows(m_statements->oldest, maxRemoved + m_added);
        while (rows.next() &&
               (isOverLimit() || rows.number(0) <= tooOld || rows.number(1) < oldest)) {
            HistoryEntry entry;
            entry.state = HistoryEntry::State(rows.number(3));
            --m_totals.entries;
            m_totals.bytes -= rows.number(2);
            m_totals.missed -= entry.isMissed();
            last = rows.number(0);
        }
    }
    if (last == 0) {
        // Nothing is left to remove, so nothing may be counted either, even in a damaged file.
        m_totals = isOverLimit() ? Totals{m_totals.last, 0, 0, 0} : m_totals;
    } else {
        // People must see these, after a restart, too.
        m_statements->keep.run(last);
        m_statements->forgetKept.run(maxLeftOpen);
        m_statements->remove.run(last);
        m_index->removeUpTo(last);
        if (m_database.number("PRAGMA freelist_count") > maxFreePages) {
            m_database.execute("PRAGMA incremental_vacuum(64)");
        }
    }
}

void HistoryFile::readTotals()
{
    SqliteRows rows(m_statements->readTotals);
    m_totals = rows.next() ? Totals{rows.number(0), rows.number(1), rows.number(2), rows.number(3)}
                           : Totals{};
    if (m_totals.last < 0 || m_totals.last > maxHistoryNumber) {
        throw SqliteError(SqliteError::Kind::Damaged, QStringLiteral("its last number is wrong"));
    }
}

HistoryPage HistoryFile::page(const HistoryQuery &query)
{
    const qint64 before = query.before > 0 ? numberInFile(query.before) : maxHistoryNumber;
    HistoryPageReader reader(query, before, m_shift);
    const QString expression = HistoryIndex::expression(query);
    if (expression.isEmpty()) {
        reader.read(
            SqliteRows(query.onlyMissed ? m_statements->missed : m_statements->newest, before));
        return reader.page();
    }
    const std::vector<qint64> blocks = m_index->blocks(before);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        SqliteStatement search = m_index->search(blocks[i], SELECT_ENTRIES);
        const bool isLast = i + 1 == blocks.size();
        if (!reader.read(SqliteRows(search, before, expression)) || isLast ||
            !reader.goOn(blocks[i])) {
            break;
        }
    }
    return reader.page();
}

QVector<HistoryEntry> HistoryFile::leftOpen()
{
    QVector<HistoryEntry> entries;
    SqliteRows rows(m_statements->leftOpen, maxLeftOpen);
    while (rows.next()) {
        entries.append(historyEntryOf(rows, m_shift));
        entries.last().user = rows.string(selectedOfEntries);
    }
    return entries;
}

bool HistoryFile::hasLeft()
{
    return SqliteRows(m_statements->left).next();
}
