// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryIndex.h"

#include <QStringList>

#include <algorithm>

namespace {
constexpr int entriesPerBlock = 16384;
constexpr int maxSearchWords = 32;    // more of them narrow nothing down
constexpr int maxSearchLength = 1000; // characters

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

/// The words without those with which others begin: each word is looked up with all its continuations, so the
/// index is read no more than once.
QStringList withoutBeginnings(const QStringList &words)
{
    QStringList sorted = words;
    std::sort(sorted.begin(), sorted.end(), [](const QString &left, const QString &right) {
        return left.compare(right, Qt::CaseInsensitive) < 0;
    });
    QStringList kept;
    for (const QString &word : qAsConst(sorted)) {
        if (!kept.isEmpty() && word.startsWith(kept.last(), Qt::CaseInsensitive) &&
            std::all_of(word.begin(), word.end(),
                        [](QChar character) { return character.isLetterOrNumber(); })) {
            kept.removeLast();
        }
        kept.append(word);
    }
    return kept;
}

bool hasWord(const QString &text)
{
    return std::any_of(text.begin(), text.end(), [](QChar character) {
        return character.unicode() < 128 && character.isLetterOrNumber();
    });
}
} // namespace

HistoryIndex::HistoryIndex(Sqlite &database, qint64 maxBlockBytes)
    : m_database(database)
    , m_maxBlockBytes(maxBlockBytes)
    , m_blocks(database, "SELECT first FROM blocks WHERE first BETWEEN 0 AND ? ORDER BY first DESC")
    , m_newest(database, "SELECT first, bytes FROM blocks ORDER BY first DESC LIMIT 1")
    , m_oldest(database, "SELECT first FROM blocks ORDER BY first LIMIT 2")
    , m_remove(database, "DELETE FROM blocks WHERE first = ?")
    , m_setBytes(database, "UPDATE blocks SET bytes = ? WHERE first = ?")
{
}

void HistoryIndex::create(Sqlite &database)
{
    database.execute("CREATE TABLE blocks(first INTEGER PRIMARY KEY, bytes INTEGER)");
}

void HistoryIndex::add(qint64 number, const HistoryEntry &entry, qint64 bytes)
{
    if (!m_insert) {
        openNewest();
    }
    if (!m_insert || number - m_block >= entriesPerBlock || m_bytes >= m_maxBlockBytes) {
        makeBlock(number);
    }
    m_insert->run(number, entry.title, entry.text, entry.application, entry.source);
    m_bytes += bytes;
}

void HistoryIndex::openNewest()
{
    SqliteRows rows(m_newest);
    if (rows.next()) {
        open(rows.number(0), rows.number(1));
    }
}

void HistoryIndex::open(qint64 block, qint64 bytes)
{
    m_insert.emplace(m_database, sql("INSERT INTO BLOCK(rowid, title, text, application, source) "
                                     "VALUES(?, ?, ?, ?, ?)",
                                     block));
    m_block = block;
    m_bytes = bytes;
}

void HistoryIndex::makeBlock(qint64 number)
{
    prepareCommit();
    // The texts themselves are in the entries.
    m_database.execute(
        sql("CREATE VIRTUAL TABLE BLOCK USING fts5(title, text, application, source, "
            "content = entries, content_rowid = number, columnsize = 0, "
            "tokenize = 'unicode61 remove_diacritics 2')",
            number));
    SqliteStatement(m_database, "INSERT INTO blocks VALUES(?, 0)").run(number);
    open(number, 0);
}

void HistoryIndex::prepareCommit()
{
    if (m_insert) {
        m_setBytes.run(m_bytes, m_block);
    }
}

void HistoryIndex::removeUpTo(qint64 number)
{
    while (const std::optional<qint64> block = emptyBlock(number)) {
        m_database.execute(sql("DROP TABLE BLOCK", *block));
        m_remove.run(*block);
    }
}

std::optional<qint64> HistoryIndex::emptyBlock(qint64 number)
{
    SqliteRows rows(m_oldest);
    if (!rows.next()) {
        return std::nullopt;
    }
    const qint64 block = rows.number(0);
    return rows.next() && rows.number(0) <= number ? std::optional(block) : std::nullopt;
}

void HistoryIndex::rolledBack()
{
    m_insert.reset();
}

QString HistoryIndex::expression(const HistoryQuery &query)
{
    QStringList parts;
    const QStringList all =
        query.text.left(maxSearchLength).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (!all.isEmpty()) {
        QString words;
        for (const QString &word : withoutBeginnings(all.mid(0, maxSearchWords))) {
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
    SqliteRows rows(m_blocks, before - 1);
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
