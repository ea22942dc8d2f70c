// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistorySchema.h"

#include "base/sqlite/SqliteError.h"
#include "HistoryEntry.h"
#include "HistoryIndex.h"

#include <QFile>
#include <QtEndian>

namespace {
constexpr qint64 fileMark = 0x5461766F; // "Tavo", the application_id of the database
constexpr qint64 fileVersion = 1;

static_assert(int(HistoryEntry::State::Expired) == 5 && int(HistoryEntry::State::Silenced) == 6,
              "the statements name them");

#define ENTRY_COLUMNS                                                                              \
    "number INTEGER PRIMARY KEY, id TEXT, time INTEGER, source TEXT, application TEXT, "           \
    "category TEXT, \"group\" TEXT, priority INTEGER, title TEXT, text TEXT, state INTEGER, "      \
    "action TEXT, endTime INTEGER, flags INTEGER, bytes INTEGER"

constexpr const char *schema = "CREATE TABLE entries(" ENTRY_COLUMNS R"();
    CREATE INDEX entries_missed ON entries(number) WHERE state IN (5, 6);
    CREATE INDEX entries_open ON entries(number) WHERE endTime = 0;
    CREATE TABLE totals(last INTEGER, entries INTEGER, bytes INTEGER, missed INTEGER);
    INSERT INTO totals VALUES(0, 0, 0, 0);
)";

// Open entries with mustSee that have changed since they came, or that went to make room. Older files have no
// such table.
constexpr const char *keptSchema = "CREATE TABLE IF NOT EXISTS kept(" ENTRY_COLUMNS ")";

// The users of open entries with mustSee, but for the host's own. A table of its own, so that older versions
// can use the file; they leave rows of entries that have ended.
constexpr const char *ownersSchema =
    "CREATE TABLE IF NOT EXISTS owners(number INTEGER PRIMARY KEY, user TEXT)";

void checkOwner(qint64 mark, qint64 version)
{
    if (mark != fileMark) {
        throw SqliteError(SqliteError::Kind::Unusable,
                          QStringLiteral("it was made by another program; move it away, "
                                         "or give the history another file"));
    }
    if (version > fileVersion) {
        throw SqliteError(SqliteError::Kind::Unusable,
                          QStringLiteral("it was made by a newer version of Tavo; install that "
                                         "version again, or move the file away"));
    }
}
} // namespace

void checkHistoryHeader(const QString &name)
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

void setUpHistory(Sqlite &database)
{
    if (database.number("SELECT sqlite_compileoption_used('ENABLE_FTS5')") == 0) {
        throw SqliteError(SqliteError::Kind::Unusable,
                          QStringLiteral("this build of SQLite has no FTS5"));
    }
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
    database.execute(keptSchema);
    database.execute(ownersSchema);
}
