// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The file of the history: any bytes, or a good file with wrong bytes in it. Reading and writing work, or
// end in an error. A page never leads back to one before it.

#include "base/sqlite/SqliteError.h"
#include "core/base/stream.h"
#include "fuzz/support/Fuzz.h"
#include "modules/attention/history/HistoryFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <limits>

namespace {
constexpr int maxPages = 50;

/// In memory, where the system has such a folder.
class FileFolder
{
public:
    QString file() const { return m_folder.filePath(QStringLiteral("history.db")); }

    void write(const QByteArray &content) const
    {
        QFile file(this->file());
        FUZZ_CHECK(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(),
                   file.errorString());
    }

    QByteArray content() const
    {
        QFile file(this->file());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_folder{QFile::exists(QStringLiteral("/dev/shm"))
                               ? QStringLiteral("/dev/shm/tavo-fuzz-XXXXXX")
                               : QString()};
};

HistoryEntry entryOf(int number)
{
    HistoryEntry entry;
    entry.number = number;
    entry.id = QString::number(number);
    entry.user = number % 4 == 0 ? QStringLiteral("1000") : QString();
    entry.source = QStringLiteral("org.example.mail");
    entry.title = QStringLiteral("Title %1").arg(number);
    entry.text = QStringLiteral("some words to find");
    entry.state = HistoryEntry::State(1 + number % 7);
    entry.endTime = number % 3;
    entry.mustSee = number % 2 == 0;
    return entry;
}

QByteArray goodContent()
{
    constexpr int entries = 100;
    const FileFolder folder;
    {
        HistorySettings settings;
        settings.maxDays = std::numeric_limits<int>::max();
        HistoryFile file(folder.file(), settings);
        for (int i = 1; i <= entries; ++i) {
            file.apply(entryOf(i));
        }
        file.commit();
    }
    return folder.content();
}

QByteArray contentOf(ByteReader &input)
{
    static const QByteArray good = goodContent();
    if (input.below(4) == 0) {
        return input.rest();
    }
    QByteArray content = good;
    while (!input.isEmpty()) {
        const auto place = int(input.number<std::uint32_t>() % std::uint32_t(content.size()));
        const QByteArray bytes = input.bytes(1 + input.below(16));
        content.replace(place, bytes.size(), bytes);
    }
    return content;
}

void readPages(HistoryFile &file, HistoryQuery query)
{
    for (int i = 0; i < maxPages; ++i) {
        const HistoryPage page = file.page(query);
        FUZZ_CHECK(page.entries.size() <= query.limit, page.entries.size());
        qint64 before = query.before > 0 ? query.before : std::numeric_limits<qint64>::max();
        for (const HistoryEntry &entry : page.entries) {
            FUZZ_CHECK(entry.number < before, entry.number);
            before = entry.number;
        }
        FUZZ_CHECK(page.next <= before, page.next);
        if (page.next <= 0) {
            return;
        }
        FUZZ_CHECK(query.before <= 0 || page.next < query.before, page.next);
        query.before = page.next;
    }
}

void useFile(const QString &name)
{
    HistorySettings settings;
    settings.maxEntries = 90;
    HistoryFile file(name, settings);
    const qint64 last = file.lastNumber();
    file.setShift(last - 1000);
    file.leftOpen();
    file.hasLeft();
    HistoryQuery query;
    query.limit = 40;
    readPages(file, query);
    query.onlyMissed = true;
    readPages(file, query);
    query.source = QStringLiteral("org.example.mail");
    readPages(file, query);
    query = {};
    query.text = QStringLiteral("som fi");
    readPages(file, query);
    for (int i = 0; i < 3; ++i) {
        file.apply(HistoryLeftEnd{1});
        file.apply(HistoryChange{999 - i, HistoryEntry::State::Expired, {}, 2});
        file.apply(entryOf(1001 + i));
        file.apply(HistoryReplacement{entryOf(998 - i)});
        file.apply(HistorySeen{998});
        if (i == 0) {
            file.rollback();
        } else {
            file.commit();
        }
    }
    readPages(file, query);
}
} // namespace

void fuzzOne(ByteReader &input)
{
    const FileFolder folder;
    folder.write(contentOf(input));
    try {
        useFile(folder.file());
    } catch (const SqliteError &error) {
        FUZZ_CHECK(!error.reason().isEmpty(), "no reason");
    }
}
