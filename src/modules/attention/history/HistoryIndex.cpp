// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryIndex.h"

#include <QStringList>

#include <algorithm>

namespace {
constexpr int entriesPerBlock = 4096;
constexpr int maxSearchWords = 32;    // more of them narrow nothing down
constexpr int maxSearchLength = 1000; // characters

qint64 blockOf(qint64 number)
{
    return number / entriesPerBlock;
}

QByteArray sql(const char *text, qint64 block)
{
    return QByteArray(text).replace("BLOCK", "words_" + QByteArray::number(block));
}

QString quoted(QString text)
{
    text.replace(QChar(0), QLatin1Char(' '));
    text.replace(QLatin1Char('"'), QLatin1Char(' '));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

bool hasWord(const QString &text)
{
    return std::any_of(text.begin(), text.end(), [](QChar character) {
        return character.unicode() < 128 && character.isLetterOrNumber();
    });
}
} // namespace

HistoryIndex::HistoryIndex(Sqlite &database)
    : m_database(database)
    , m_blocks(database,
               "SELECT number FROM blocks WHERE number BETWEEN 0 AND ? ORDER BY number DESC")
    , m_oldest(database, "SELECT number FROM blocks WHERE number < ? ORDER BY number LIMIT 1")
    , m_remove(database, "DELETE FROM blocks WHERE number = ?")
{
}

void HistoryIndex::create(Sqlite &database)
{
    database.execute("CREATE TABLE blocks(number INTEGER PRIMARY KEY)");
}

void HistoryIndex::add(qint64 number, const HistoryEntry &entry)
{
    if (m_open != blockOf(number)) {
        open(blockOf(number));
    }
    m_insert->run(number, entry.title, entry.text, entry.application, entry.source);
}

void HistoryIndex::open(qint64 block)
{
    // The texts themselves are in the entries.
    m_database.execute(
        sql("CREATE VIRTUAL TABLE IF NOT EXISTS BLOCK USING fts5(title, text, application, source, "
            "content = entries, content_rowid = number, columnsize = 0, "
            "tokenize = 'unicode61 remove_diacritics 2')",
            block));
    SqliteStatement(m_database, "INSERT OR IGNORE INTO blocks VALUES(?)").run(block);
    m_insert.emplace(m_database, sql("INSERT INTO BLOCK(rowid, title, text, application, source) "
                                     "VALUES(?, ?, ?, ?, ?)",
                                     block));
    m_open = block;
}

void HistoryIndex::removeBefore(qint64 number)
{
    qint64 block = -1;
    {
        SqliteRows rows(m_oldest, blockOf(number));
        if (!rows.next()) {
            return;
        }
        block = rows.number(0);
    }
    rolledBack(); // so that the statement does not keep the table
    m_database.execute(sql("DROP TABLE BLOCK", block));
    m_remove.run(block);
}

void HistoryIndex::rolledBack()
{
    m_insert.reset();
    m_open = -1;
}

QString HistoryIndex::expression(const HistoryQuery &query)
{
    QStringList parts;
    const QStringList all =
        query.text.left(maxSearchLength).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (!all.isEmpty()) {
        QString words;
        for (const QString &word : all.mid(0, maxSearchWords)) {
            words += quoted(word) + QLatin1String("* ");
        }
        parts.append(QLatin1String("{title text application} : (") + words + QLatin1Char(')'));
    }
    const QString source = query.source.left(maxSearchLength);
    if (hasWord(source)) {
        parts.append(QLatin1String("source : ") + quoted(source));
    }
    return parts.join(QLatin1String(" AND "));
}

std::vector<qint64> HistoryIndex::blocks(qint64 before)
{
    std::vector<qint64> blocks;
    SqliteRows rows(m_blocks, blockOf(before - 1));
    while (rows.next()) {
        blocks.push_back(rows.number(0));
    }
    return blocks;
}

SqliteStatement HistoryIndex::search(qint64 block, const char *select)
{
    return SqliteStatement(m_database,
                           select + sql("BLOCK(?2) AS found CROSS JOIN entries "
                                        "ON entries.number = found.rowid "
                                        "WHERE found.rowid < ?1 ORDER BY found.rowid DESC",
                                        block));
}

qint64 HistoryIndex::firstOf(qint64 block)
{
    return block * entriesPerBlock;
}
