// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/sqlite/Sqlite.h"

#include "base/sqlite/SqliteError.h"

#include <QFile>

#include <sqlite3.h>

namespace {
constexpr int busyTimeoutMs = 1000;    // somebody may be looking at the file
constexpr int maxValueBytes = 1 << 20; // a damaged file could claim any size
constexpr int maxHeapBytes = 1 << 26;  // of all databases of the process, for the same reason

SqliteError::Kind kindOf(int code)
{
    switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_TOOBIG:
    case SQLITE_ERROR: // it has other tables than ours
        return SqliteError::Kind::Damaged;
    default:
        return SqliteError::Kind::Failed;
    }
}
} // namespace

Sqlite::Sqlite(const QString &file)
{
    sqlite3_hard_heap_limit64(maxHeapBytes);
    sqlite3 *handle = nullptr;
    const int code = sqlite3_open_v2(QFile::encodeName(file).constData(), &handle,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE |
                                         SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE,
                                     nullptr);
    m_handle.reset(handle);
    if (!handle) {
        throw SqliteError(SqliteError::Kind::Failed, QStringLiteral("out of memory"));
    }
    check(code);
    sqlite3_busy_timeout(handle, busyTimeoutMs);
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, maxValueBytes);
    // Nothing that is in a file is run.
    for (const int option : {SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW,
                             SQLITE_DBCONFIG_TRUSTED_SCHEMA}) {
        check(sqlite3_db_config(handle, option, 0, nullptr));
    }
    check(sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr));
}

void Sqlite::Closer::operator()(sqlite3 *handle) const
{
    sqlite3_close_v2(handle);
}

void Sqlite::execute(const QByteArray &sql)
{
    check(sqlite3_exec(handle(), sql.constData(), nullptr, nullptr, nullptr));
}

qint64 Sqlite::number(const char *sql)
{
    SqliteStatement statement(*this, sql);
    SqliteRows rows(statement);
    return rows.next() ? rows.number(0) : 0;
}

qint64 Sqlite::changedRows() const
{
    return sqlite3_changes64(handle());
}

bool Sqlite::isInTransaction() const
{
    return sqlite3_get_autocommit(handle()) == 0;
}

void Sqlite::check(int code) const
{
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) {
        return;
    }
    const QString reason = (code & 0xFF) == SQLITE_BUSY
                               ? QStringLiteral("it is in use by another process")
                               : QString::fromUtf8(sqlite3_errmsg(handle()));
    throw SqliteError(kindOf(code), reason);
}

SqliteStatement::SqliteStatement(Sqlite &database, const QByteArray &sql)
    : m_database(&database)
{
    sqlite3_stmt *statement = nullptr;
    database.check(sqlite3_prepare_v3(database.handle(), sql.constData(), -1,
                                      SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    m_statement.reset(statement);
}

void SqliteStatement::Finalizer::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

SqliteRows::SqliteRows(SqliteStatement &statement)
    : m_database(*statement.m_database)
    , m_statement(statement.m_statement.get())
{
}

SqliteRows::~SqliteRows()
{
    sqlite3_reset(m_statement);
}

bool SqliteRows::next()
{
    const int code = sqlite3_step(m_statement);
    m_database.check(code);
    return code == SQLITE_ROW;
}

qint64 SqliteRows::number(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

QByteArray SqliteRows::bytes(int column) const
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
    return {text, sqlite3_column_bytes(m_statement, column)};
}

QString SqliteRows::string(int column) const
{
    return QString::fromUtf8(bytes(column));
}

void SqliteRows::bind(int index, qint64 value)
{
    m_database.check(sqlite3_bind_int64(m_statement, index, value));
}

void SqliteRows::bind(int index, const QByteArray &text)
{
    m_database.check(
        sqlite3_bind_text(m_statement, index, text.constData(), text.size(), SQLITE_TRANSIENT));
}
