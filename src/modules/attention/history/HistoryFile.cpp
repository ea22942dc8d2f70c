// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryFile.h"

#include "HistoryError.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <QtEndian>

#include <vector>

namespace {
constexpr qint64 fileMark = 0x5461766F; // "Tavo", the application_id of the database
constexpr qint64 fileVersion = 1;

constexpr int maxRemoved = 100;      // in one transaction, so that each is short
constexpr qint64 maxFreePages = 256; // before the file is made shorter
constexpr qint64 maxReadMs = 100;    // then a page ends, so that new entries are written in time
constexpr int maxLeftOpen = 1000;    // nobody can see more of them
constexpr qint64 msPerDay = 86'400'000;
constexpr qint64 maxNumber = qint64(1) << 60; // leaves room for the shift

constexpr int privateFlag = 1;
constexpr int mustSeeFlag = 2;

static_assert(int(HistoryEntry::State::Expired) == 5 && int(HistoryEntry::State::Silenced) == 6,
              "the statements name them");

constexpr const char *schema = R"(
    CREATE TABLE entries(
        number INTEGER PRIMARY KEY, id TEXT, time INTEGER, source TEXT, application TEXT, category TEXT,
        "group" TEXT, priority INTEGER, title TEXT, text TEXT, state INTEGER, action TEXT,
        endTime INTEGER, flags INTEGER, bytes INTEGER);
    CREATE INDEX entries_missed ON entries(number) WHERE state IN (5, 6);
    CREATE INDEX entries_open ON entries(number) WHERE endTime = 0;
    CREATE TABLE totals(entries INTEGER, bytes INTEGER, missed INTEGER);
    INSERT INTO totals VALUES(0, 0, 0);
)";

#define SELECT_ENTRIES                                                                             \
    "SELECT entries.number, entries.id, entries.time, entries.source, entries.application, "       \
    "entries.category, entries.\"group\", entries.priority, entries.title, entries.text, "         \
    "entries.state, entries.action, entries.endTime, entries.flags FROM "

void checkOwner(qint64 mark, qint64 version)
{
    if (mark != fileMark) {
        throw HistoryError(HistoryError::Kind::Unusable,
                           QStringLiteral("it was made by another program; move it away, "
                                          "or give the history another file"));
    }
    if (version > fileVersion) {
        throw HistoryError(HistoryError::Kind::Unusable,
                           QStringLiteral("it was made by a newer version of Tavo; install that "
                                          "version again, or move the file away"));
    }
}

/// SQLite changes files of others as soon as it reads them, so the first bytes are read without it.
void checkHeader(const QString &name)
{
    constexpr int versionAt = 60;
    constexpr int markAt = 68;
    constexpr int headerSize = 100;
    QFile file(name);
    const QByteArray header = file.open(QIODevice::ReadOnly) ? file.read(headerSize) : QByteArray();
    if (header.size() == headerSize && header.startsWith("SQLite format 3")) {
        const qint64 mark = qFromBigEndian<quint32>(header.constData() + markAt);
        const qint64 version = qFromBigEndian<quint32>(header.constData() + versionAt);
        if (mark != 0) { // it is while the file is being made
            checkOwner(mark, version);
        }
    }
}

/// Reads or makes the tables, before statements are prepared for them.
void setUp(Sqlite &database)
{
    // No other process can use the file, and its log needs no shared memory.
    database.execute("PRAGMA locking_mode = EXCLUSIVE");
    const bool isNew = database.number("SELECT count(*) FROM sqlite_schema") == 0;
    if (!isNew) {
        checkOwner(database.number("PRAGMA application_id"),
                   database.number("PRAGMA user_version"));
    }
    if (isNew) {
        database.execute("PRAGMA auto_vacuum = INCREMENTAL");
    }
    database.execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
                     "PRAGMA wal_autocheckpoint = 256; PRAGMA journal_size_limit = 1048576;"
                     "PRAGMA cache_size = -2048; PRAGMA cache_spill = OFF;"
                     "PRAGMA temp_store = MEMORY; PRAGMA cell_size_check = ON");
    if (isNew) {
        const QByteArray marks =
            QStringLiteral("PRAGMA application_id = %1; PRAGMA user_version = %2; COMMIT")
                .arg(fileMark)
                .arg(fileVersion)
                .toLatin1();
        database.execute("BEGIN");
        database.execute(schema);
        HistoryIndex::create(database);
        database.execute(marks.constData());
    }
}

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
    SqliteStatement readTotals{database, "SELECT entries, bytes, missed FROM totals"};
    SqliteStatement writeTotals{database, "UPDATE totals SET entries = ?, bytes = ?, missed = ?"};
    SqliteStatement insert{
        database, "INSERT INTO entries VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"};
    SqliteStatement state{database, "SELECT state FROM entries WHERE number = ?"};
    SqliteStatement change{
        database, "UPDATE entries SET state = ?, action = ?, endTime = ? WHERE number = ?"};
    SqliteStatement see{database, "UPDATE entries INDEXED BY entries_missed SET state = ? "
                                  "WHERE state IN (5, 6) AND number <= ?"};
    SqliteStatement leftOpen{database, SELECT_ENTRIES
                             "entries INDEXED BY entries_open "
                             "WHERE endTime = 0 AND flags & 2 ORDER BY number LIMIT ?"};
    SqliteStatement left{database, "SELECT 1 FROM entries INDEXED BY entries_open "
                                   "WHERE endTime = 0 AND NOT flags & 2 LIMIT 1"};
    SqliteStatement endLeft{database, "UPDATE entries INDEXED BY entries_open SET endTime = ? "
                                      "WHERE endTime = 0 AND NOT flags & 2"};
    SqliteStatement oldest{
        database, "SELECT number, time, bytes, state FROM entries ORDER BY number LIMIT ?"};
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
    checkHeader(file);
    setUp(m_database);
    m_statements = std::make_unique<Statements>(m_database);
    m_index.emplace(m_database);
    readTotals();
}

HistoryFile::~HistoryFile() = default;

qint64 HistoryFile::lastNumber()
{
    const qint64 last = m_database.number("SELECT max(number) FROM entries");
    if (last < 0 || last > maxNumber) {
        throw HistoryError(HistoryError::Kind::Damaged, QStringLiteral("its numbers are wrong"));
    }
    return last;
}

qint64 HistoryFile::numberInFile(qint64 number) const
{
    return qBound(-maxNumber, number, maxNumber) + m_shift;
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
    const int flags = (entry.isPrivate ? privateFlag : 0) | (entry.mustSee ? mustSeeFlag : 0);
    m_statements->insert.run(number, entry.id, entry.time, entry.source, entry.application,
                             entry.category, entry.group, entry.priority, entry.title, entry.text,
                             int(entry.state), entry.action, entry.endTime, flags, bytes);
    m_index->add(number, entry);
    ++m_totals.entries;
    m_totals.bytes += bytes;
    m_totals.missed += entry.isMissed();
}

void HistoryFile::write(const HistoryChange &change)
{
    const qint64 number = numberInFile(change.number);
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
    m_statements->see.run(int(HistoryEntry::State::Seen), numberInFile(seen.upTo));
    m_totals.missed -= m_database.changedRows();
}

void HistoryFile::write(const HistoryLeftEnd &left)
{
    m_statements->endLeft.run(left.time);
}

void HistoryFile::commit()
{
    if (!m_database.isInTransaction() && !isOverLimit()) {
        return;
    }
    begin();
    removeOldest();
    m_statements->writeTotals.run(m_totals.entries, m_totals.bytes, m_totals.missed);
    m_statements->commit.run();
}

void HistoryFile::rollback()
{
    // Some errors have already ended the transaction.
    if (m_database.isInTransaction()) {
        m_statements->rollback.run();
    }
    m_index->rolledBack();
    readTotals();
}

bool HistoryFile::isOverLimit() const
{
    return m_totals.entries > m_settings.maxEntries || m_totals.bytes > m_settings.maxBytes;
}

void HistoryFile::removeOldest()
{
    const qint64 oldest = QDateTime::currentMSecsSinceEpoch() - m_settings.maxDays * msPerDay;
    qint64 last = 0;
    {
        SqliteRows rows(m_statements->oldest, maxRemoved);
        while (rows.next() && (isOverLimit() || rows.number(1) < oldest)) {
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
        m_totals = isOverLimit() ? Totals{} : m_totals;
    } else {
        m_statements->remove.run(last);
        m_index->removeBefore(last + 1);
        if (m_database.number("PRAGMA freelist_count") > maxFreePages) {
            m_database.execute("PRAGMA incremental_vacuum(64)");
        }
    }
}

void HistoryFile::readTotals()
{
    SqliteRows rows(m_statements->readTotals);
    m_totals = rows.next() ? Totals{rows.number(0), rows.number(1), rows.number(2)} : Totals{};
}

/// Puts rows into a page until it is full, or its time is over.
class HistoryFile::PageReader
{
public:
    PageReader(const HistoryFile &file, const HistoryQuery &query, qint64 before)
        : m_file(file)
        , m_query(query)
        , m_before(before)
        , m_limit(qBound(1, query.limit, HistoryQuery::maxLimit))
    {
        m_elapsed.start();
    }

    /// Returns whether there is room and time for more.
    bool read(SqliteRows &&rows)
    {
        while (rows.next()) {
            const HistoryEntry entry = m_file.entryOf(rows);
            // In a damaged file; a page must never lead back to one before it.
            if (entry.number >= m_before) {
                throw HistoryError(HistoryError::Kind::Damaged,
                                   QStringLiteral("its entries are in a wrong order"));
            }
            m_before = entry.number;
            if (m_page.entries.size() == m_limit || isLate()) {
                m_page.next = entry.number + 1;
                return false;
            }
            m_hasRead = true;
            // One of the conditions has selected the rows.
            if ((m_query.source.isEmpty() || entry.source == m_query.source) &&
                (!m_query.onlyMissed || entry.isMissed())) {
                m_page.entries.append(entry);
            }
        }
        return true;
    }

    /// Nothing from this number on is left to read. Returns whether there is time for more.
    bool hasTime(qint64 next)
    {
        m_hasRead = true;
        if (isLate()) {
            m_page.next = next;
        }
        return !isLate();
    }

    const HistoryPage &page() const { return m_page; }

private:
    /// Never before something has been read: otherwise the next page would be the same.
    bool isLate() const { return m_hasRead && m_elapsed.hasExpired(maxReadMs); }

    const HistoryFile &m_file;
    const HistoryQuery &m_query;
    qint64 m_before; ///< the next entry's number must be lower
    const int m_limit;
    QElapsedTimer m_elapsed;
    bool m_hasRead = false;
    HistoryPage m_page;
};

HistoryPage HistoryFile::page(const HistoryQuery &query)
{
    const qint64 before = query.before > 0 ? numberInFile(query.before) : maxNumber;
    PageReader reader(*this, query, before - m_shift);
    const QString expression = HistoryIndex::expression(query);
    if (expression.isEmpty()) {
        reader.read(
            SqliteRows(query.onlyMissed ? m_statements->missed : m_statements->newest, before));
        return reader.page();
    }
    const std::vector<qint64> blocks = m_index->blocks(before);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        SqliteStatement search = m_index->search(blocks[i], SELECT_ENTRIES);
        const bool goesOn =
            reader.read(SqliteRows(search, before, expression)) &&
            (i + 1 == blocks.size() || reader.hasTime(HistoryIndex::firstOf(blocks[i]) - m_shift));
        if (!goesOn) {
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
        entries.append(entryOf(rows));
    }
    return entries;
}

bool HistoryFile::hasLeft()
{
    return SqliteRows(m_statements->left).next();
}

HistoryEntry HistoryFile::entryOf(const SqliteRows &rows) const
{
    int column = 0;
    HistoryEntry entry;
    entry.number = qBound(-maxNumber, rows.number(column++), maxNumber) - m_shift;
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
    entry.isPrivate = flags & privateFlag;
    entry.mustSee = flags & mustSeeFlag;
    return entry;
}
