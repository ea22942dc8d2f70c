// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryTest.h"
#include "support/program/Program.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <sqlite3.h>

using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

namespace {
class DurabilityTest : public HistoryTest
{
protected:
    /// All entries of a source, newest first.
    QVector<HistoryEntry> entriesOf(const QString &source)
    {
        QVector<HistoryEntry> entries;
        HistoryQuery query;
        query.source = source;
        query.limit = HistoryQuery::maxLimit;
        do {
            const HistoryPage page = this->page(query);
            entries += page.entries;
            query.before = page.next;
        } while (query.before != 0);
        return entries;
    }

    /// Returns how many there are.
    int expectAllFromTheFirstOn(const QString &source)
    {
        const QVector<HistoryEntry> entries = entriesOf(source);
        for (int i = 0; i < entries.size(); ++i) {
            const int index = entries.size() - 1 - i;
            EXPECT_EQ(entries[i].title, QString::number(index));
            // What comes last may have been lost.
            if (i > 0) {
                EXPECT_EQ(entries[i].state == State::Dismissed, index % 2 == 1) << index;
            }
        }
        return entries.size();
    }

    void expectSound() const
    {
        sqlite3 *database = nullptr;
        sqlite3_open(QFile::encodeName(settings.file).constData(), &database);
        const auto takeRow = [](void *result, int, char **values, char **) {
            *static_cast<std::string *>(result) += values[0];
            return 0;
        };
        std::string result;
        sqlite3_exec(database, "PRAGMA integrity_check", takeRow, &result, nullptr);
        EXPECT_EQ(result, "ok");
        sqlite3_close(database);
    }

    /// The titles in a copy of the files as they are on the disk now.
    QStringList titlesOnDisk() const
    {
        const QTemporaryDir copies;
        for (const QString &name : QDir(folder.path()).entryList({"history.db*"_s}, QDir::Files)) {
            QFile::copy(folder.filePath(name), copies.filePath(name));
        }
        HistorySettings copied = settings;
        copied.file = copies.filePath("history.db"_s);
        History copy(copied);
        QStringList read;
        bool isRead = false;
        copy.page({}, [&](const Result<HistoryPage> &page) {
            if (std::holds_alternative<HistoryPage>(page)) {
                read = titles(std::get<HistoryPage>(page));
            }
            isRead = true;
        });
        EXPECT_TRUE(waitFor([&] { return isRead; }));
        return read;
    }

    static QStringList threads()
    {
        return QDir("/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    }

    /// How often a thread has gone to sleep.
    static QByteArray sleepsOf(const QString &thread)
    {
        QFile file("/proc/self/task/%1/status"_s.arg(thread));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith("voluntary_ctxt_switches")) {
                return line;
            }
        }
        return {};
    }
};
} // namespace

// With TAVO_HISTORY_KILLS in the environment, that often.
TEST_F(DurabilityTest, AProcessThatIsKilledLosesOnlyItsLastEntries)
{
    const int kills = std::max(5, qEnvironmentVariableIntValue("TAVO_HISTORY_KILLS"));
    settings.maxEntries = 1'000'000;
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> moment(0, 400);
    QVector<int> sizes;
    for (int i = 0; i < kills; ++i) {
        const QString name = "round%1"_s.arg(i);
        SCOPED_TRACE(i);
        history.reset();
        Program filler(QStringLiteral(HISTORY_FILLER));
        filler.start({settings.file, name});
        ASSERT_TRUE(filler.waitForOutput("started"));
        const int ms = moment(random);
        waitFor([] { return false; }, std::chrono::milliseconds(ms));
        filler.kill();
        filler.waitForExit();

        start();
        sizes.append(expectAllFromTheFirstOn(name));
        EXPECT_THAT(*damaged, IsEmpty());
        EXPECT_THAT(*failed, IsEmpty());
        history.reset();
        expectSound();
    }
    start();
    for (int i = 0; i < kills; ++i) {
        EXPECT_EQ(entriesOf("round%1"_s.arg(i)).size(), sizes[i]);
    }
}

TEST_F(DurabilityTest, AnEntryIsOnTheDiskSoonWithoutAnother)
{
    start();
    history->add(entry("One"_s));
    EXPECT_TRUE(waitFor([&] { return titlesOnDisk().contains("One"_s); }));
}

TEST_F(DurabilityTest, SomeLargeEntriesAreWrittenAtOnce)
{
    constexpr int count = 150;
    constexpr int usualDelayMs = 200;
    start();
    page();
    const QString text(History::maxTextLength, QLatin1Char('x'));
    // The thread may come late on a busy machine, but hardly each time.
    bool isSoon = false;
    for (int i = 0; i < 20 && !isSoon; ++i) {
        const QSignalSpy changed(history.get(), &History::changed);
        QElapsedTimer time;
        time.start();
        for (int added = 0; added < count; ++added) {
            history->add(entry("Large"_s, text));
        }
        EXPECT_TRUE(waitFor([&] { return !changed.isEmpty(); }));
        isSoon = !time.hasExpired(usualDelayMs);
        page(); // everything is written
    }
    EXPECT_TRUE(isSoon);
}

TEST_F(DurabilityTest, AThreadThatHasNothingToDoSleeps)
{
    const QStringList before = threads();
    start();
    history->add(entry("One"_s));
    EXPECT_TRUE(waitFor([&] { return titlesOnDisk().contains("One"_s); }));
    QString thread;
    for (const QString &name : threads()) {
        if (!before.contains(name)) {
            thread = name;
        }
    }
    ASSERT_FALSE(thread.isEmpty());
    // It may still be finishing in the first of these times. What wakes up regularly does so in each.
    bool hasSlept = false;
    for (int i = 0; i < 5 && !hasSlept; ++i) {
        const QByteArray sleeps = sleepsOf(thread);
        waitFor([] { return false; }, std::chrono::milliseconds(600));
        hasSlept = sleepsOf(thread) == sleeps;
    }
    EXPECT_TRUE(hasSlept);
}
