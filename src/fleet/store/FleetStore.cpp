// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/store/FleetStore.h"

#include "base/sqlite/Sqlite.h"
#include "base/sqlite/SqliteError.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

// Before the names of the columns, which callOf() reads in this order.
#define SELECT_CALLS "SELECT id, call, source, answer, path, open, forgetAfter FROM calls "

namespace {
constexpr int fileMark = 0x54564C46;
/// Each write of a page takes time, so there are no further indexes: what is begun and what is open is searched for
/// only at the start.
constexpr auto schema =
    "CREATE TABLE calls(id TEXT PRIMARY KEY, call TEXT NOT NULL, source TEXT NOT NULL,"
    " answer TEXT NOT NULL, path TEXT NOT NULL, open INTEGER NOT NULL,"
    " forgetAfter INTEGER NOT NULL, number INTEGER NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE outgoing(number INTEGER PRIMARY KEY, topic TEXT NOT NULL, payload TEXT NOT NULL,"
    " expires INTEGER NOT NULL);";

qint64 bytesOf(const OutgoingMessage &message)
{
    return message.topic.size() + message.payload.size();
}

StoredCall callOf(const SqliteRows &row)
{
    StoredCall call;
    int column = 0;
    call.id = row.string(column++);
    call.call = row.bytes(column++);
    call.group = row.string(column++);
    call.answer = row.bytes(column++);
    call.path = row.string(column++);
    call.isOpen = row.number(column++) != 0;
    call.forgetAfter = row.number(column++);
    return call;
}

std::vector<StoredCall> callsOf(SqliteStatement &statement)
{
    std::vector<StoredCall> calls;
    SqliteRows rows(statement);
    while (rows.next()) {
        calls.push_back(callOf(rows));
    }
    return calls;
}
} // namespace

struct FleetStore::Statements
{
    explicit Statements(const QString &file)
        : database(file)
    {
    }

    Sqlite database;
    const int ready = prepare(database); ///< before the statements
    SqliteStatement beginChange{database, "BEGIN IMMEDIATE"};
    SqliteStatement commit{database, "COMMIT"};
    SqliteStatement rollback{database, "ROLLBACK"};
    SqliteStatement find{database, SELECT_CALLS "WHERE id = ?"};
    SqliteStatement begun{database, SELECT_CALLS "WHERE answer = '' ORDER BY number"};
    SqliteStatement open{database, SELECT_CALLS "WHERE open != 0 ORDER BY number"};
    SqliteStatement begin{
        database, "INSERT INTO calls VALUES(?, ?, ?, '', '', 0, ?, ?) ON CONFLICT DO NOTHING"};
    SqliteStatement answer{database,
                           "UPDATE calls SET answer = ?, path = ?, open = ? WHERE id = ?"};
    SqliteStatement end{database, "UPDATE calls SET open = 0 WHERE id = ?"};
    SqliteStatement forgetOld{database, "DELETE FROM calls WHERE forgetAfter < ?"};
    SqliteStatement forgetFirst{database,
                                "DELETE FROM calls WHERE number < ? AND open = 0 AND answer != ''"};
    SqliteStatement countCalls{database, "SELECT count(*), ifnull(max(number), 0) FROM calls"};
    SqliteStatement insert{database, "INSERT INTO outgoing VALUES(?, ?, ?, ?)"};
    SqliteStatement remove{database, "DELETE FROM outgoing WHERE number = ?"};
    SqliteStatement removeOld{database, "DELETE FROM outgoing WHERE expires < ?"};
    SqliteStatement removeFirst{database, "DELETE FROM outgoing WHERE number IN "
                                          "(SELECT number FROM outgoing ORDER BY number LIMIT ?)"};
    SqliteStatement outgoing{database, "SELECT number, topic, payload, expires FROM outgoing "
                                       "WHERE number > ? ORDER BY number LIMIT ?"};
    SqliteStatement totals{database, "SELECT count(*), ifnull(sum(length(topic) + "
                                     "length(CAST(payload AS BLOB))), 0) FROM outgoing"};
    SqliteStatement lastOutgoing{database, "SELECT ifnull(max(number), 0) FROM outgoing"};

private:
    static int prepare(Sqlite &database)
    {
        // No other process can use the file, and its log needs no shared memory. Each change writes whole pages, so
        // new files have small ones, in which a call still fits as a whole.
        database.execute("PRAGMA page_size = 2048; PRAGMA locking_mode = EXCLUSIVE;"
                         "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                         "PRAGMA wal_autocheckpoint = 4000; PRAGMA journal_size_limit = 1048576;"
                         "PRAGMA cache_size = -256; PRAGMA temp_store = MEMORY");
        if (database.number("SELECT count(*) FROM sqlite_schema") == 0) {
            database.execute(
                QStringLiteral("BEGIN IMMEDIATE; %1 PRAGMA application_id = %2; COMMIT")
                    .arg(QLatin1String(schema))
                    .arg(fileMark)
                    .toLatin1());
        } else if (database.number("PRAGMA application_id") != fileMark) {
            throw SqliteError(SqliteError::Kind::Unusable,
                              QStringLiteral("it is not a file of the fleet"));
        }
        database.execute("BEGIN IMMEDIATE; COMMIT"); // takes the lock
        return 0;
    }
};

FleetStore::FleetStore(const QString &file)
{
    QDir().mkpath(QFileInfo(file).path());
    try {
        openFile(file);
    } catch (const SqliteError &error) {
        if (error.kind() != SqliteError::Kind::Damaged) {
            throw;
        }
        m_damage = error.reason();
        m_statements.reset();
        const QString aside = file + QStringLiteral(".damaged");
        QFile::remove(aside);
        QFile::remove(file + QStringLiteral("-wal"));
        QFile::rename(file, aside);
        openFile(file);
    }
}

FleetStore::~FleetStore()
{
    try {
        flush();
    } catch (const SqliteError &) {
        // They are published again.
    }
}

void FleetStore::openFile(const QString &file)
{
    m_statements = std::make_unique<Statements>(file);
    QFile::setPermissions(file, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    readTotals();
    SqliteRows last(m_statements->lastOutgoing);
    last.next();
    m_lastOutgoing = last.number(0);
}

void FleetStore::readTotals()
{
    SqliteRows totals(m_statements->totals);
    totals.next();
    m_count = totals.number(0);
    m_bytes = totals.number(1);
    SqliteRows calls(m_statements->countCalls);
    calls.next();
    m_calls = calls.number(0);
    m_lastCall = qMax(m_lastCall, calls.number(1));
}

/// Does it all or nothing.
template <typename Change>
void FleetStore::change(const Change &change)
{
    m_statements->beginChange.run();
    try {
        change();
        m_statements->commit.run();
    } catch (const SqliteError &) {
        if (m_statements->database.isInTransaction()) {
            m_statements->rollback.run();
        }
        throw;
    }
}

std::optional<StoredCall> FleetStore::find(const QString &id)
{
    SqliteRows rows(m_statements->find, id);
    return rows.next() ? std::optional(callOf(rows)) : std::nullopt;
}

void FleetStore::write(StoreChanges &changes)
{
    change([&] {
        for (const StoredCall &call : changes.begun) {
            if (!insert(call)) {
                changes.known.push_back(call.id);
            }
        }
        for (const StoredCall &call : changes.answered) {
            m_statements->answer.run(call.answer, call.path, call.isOpen, call.id);
        }
        for (const QString &id : changes.ended) {
            m_statements->end.run(id);
        }
        if (!changes.messages.empty()) { // The same page changes.
            removeSent();
        }
        for (OutgoingMessage &message : changes.messages) {
            insert(message);
        }
    });
    if (!changes.messages.empty()) {
        m_removed.clear();
    }
}

void FleetStore::removeSent()
{
    for (const qint64 number : m_removed) {
        m_statements->remove.run(number);
    }
}

bool FleetStore::insert(const StoredCall &call)
{
    if (m_calls >= maxCalls) {
        // Many at once, because it takes a search.
        constexpr int forgottenAtOnce = maxCalls / 100;
        m_statements->forgetFirst.run(m_lastCall - maxCalls + forgottenAtOnce);
        m_calls -= m_statements->database.changedRows();
    }
    m_statements->begin.run(call.id, call.call, call.group, call.forgetAfter, m_lastCall + 1);
    const bool isNew = m_statements->database.changedRows() > 0;
    m_calls += isNew ? 1 : 0;
    m_lastCall += isNew ? 1 : 0;
    return isNew;
}

void FleetStore::insert(OutgoingMessage &message)
{
    makeRoom(bytesOf(message));
    message.number = ++m_lastOutgoing;
    m_statements->insert.run(message.number, message.topic, message.payload, message.expires);
    ++m_count;
    m_bytes += bytesOf(message);
}

/// Removes what has expired, and then the oldest ones.
void FleetStore::makeRoom(qint64 bytes)
{
    constexpr int removedAtOnce = 100;
    if (m_count < maxOutgoing && m_bytes + bytes <= maxOutgoingBytes) {
        return;
    }
    m_statements->removeOld.run(QDateTime::currentMSecsSinceEpoch());
    qint64 removed = m_statements->database.changedRows();
    readTotals();
    while (m_count > 0 && (m_count >= maxOutgoing || m_bytes + bytes > maxOutgoingBytes)) {
        m_statements->removeFirst.run(removedAtOnce);
        removed += m_statements->database.changedRows();
        readTotals();
    }
    m_dropped += removed;
}

void FleetStore::remove(qint64 number)
{
    constexpr std::size_t maxRemoved = 100;
    m_removed.push_back(number);
    if (--m_count == 0) {
        m_bytes = 0; // until then, it is an upper limit
    }
    if (m_removed.size() >= maxRemoved) {
        flush();
    }
}

void FleetStore::flush()
{
    if (!m_removed.empty()) {
        change([this] { removeSent(); });
        m_removed.clear();
    }
}

std::vector<OutgoingMessage> FleetStore::outgoing(qint64 after, int count)
{
    flush();
    std::vector<OutgoingMessage> messages;
    SqliteRows rows(m_statements->outgoing, after, count);
    while (rows.next()) {
        messages.push_back({rows.number(0), rows.string(1), rows.bytes(2), rows.number(3)});
    }
    return messages;
}

std::vector<StoredCall> FleetStore::begun()
{
    return callsOf(m_statements->begun);
}

std::vector<StoredCall> FleetStore::open()
{
    return callsOf(m_statements->open);
}

void FleetStore::tidy(qint64 now)
{
    change([&] {
        m_statements->forgetOld.run(now);
        m_statements->removeOld.run(now);
        m_dropped += m_statements->database.changedRows();
    });
    readTotals();
}
