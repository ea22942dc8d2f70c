// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryTest.h"
#include "support/FullDisk.h"

#include <QFile>

#include <gmock/gmock.h>

#include <cstdlib>
#include <sqlite3.h>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {
class OpenEntriesTest : public HistoryTest
{
protected:
    /// Starts the history, and returns what was left open.
    QVector<HistoryEntry> startAgain()
    {
        QVector<HistoryEntry> left;
        start();
        QObject::connect(history.get(), &History::leftOpen,
                         [&](const QVector<HistoryEntry> &entries) { left += entries; });
        page(); // comes after it
        history->disconnect();
        return left;
    }

    /// Adds one that must be seen, or not.
    HistoryEntry addOpen(bool mustSee)
    {
        HistoryEntry open = entry("First"_s, "first text"_s);
        open.mustSee = mustSee;
        open.number = history->add(open);
        return open;
    }

    void fill()
    {
        for (int i = 0; i < 10; ++i) {
            history->add(entry("Newer"_s));
        }
    }

    /// Adds ones that must be seen, with the titles 0, 1 and so on.
    void addMany(const QString &user, int count)
    {
        HistoryEntry mustSee = entry("Open"_s);
        mustSee.mustSee = true;
        mustSee.user = user;
        for (int i = 0; i < count; ++i) {
            mustSee.title = QString::number(i);
            history->add(mustSee);
        }
    }

    static QStringList titlesOf(const QString &user, const QVector<HistoryEntry> &entries)
    {
        QStringList titles;
        for (const HistoryEntry &entry : entries) {
            if (entry.user == user) {
                titles.append(entry.title);
            }
        }
        return titles;
    }

    void expectThatEachUserKeepsItsNewest()
    {
        start();
        addMany("1000"_s, 3);
        addMany({}, 410);
        addMany("1001"_s, 1010);
        const QVector<HistoryEntry> left = startAgain();
        EXPECT_THAT(titlesOf("1000"_s, left), ElementsAre("0"_s, "1"_s, "2"_s));
        const QStringList own = titlesOf({}, left);
        EXPECT_THAT(own, SizeIs(410));
        const QStringList most = titlesOf("1001"_s, left);
        ASSERT_THAT(most, SizeIs(1000 - 3 - 410));
        EXPECT_EQ(most.last(), "1009"_s);
        EXPECT_EQ(most.first(), QString::number(1010 - most.size()));
    }

    /// Runs SQL on the file. Returns the number in the last row.
    int run(const char *sql)
    {
        history.reset();
        sqlite3 *database = nullptr;
        sqlite3_open(QFile::encodeName(settings.file).constData(), &database);
        const auto takeRow = [](void *result, int, char **values, char **) {
            *static_cast<int *>(result) = std::atoi(values[0]);
            return 0;
        };
        int result = 0;
        EXPECT_EQ(sqlite3_exec(database, sql, takeRow, &result, nullptr), SQLITE_OK);
        sqlite3_close(database);
        return result;
    }

    int owners() { return run("SELECT count(*) FROM owners"); }

    static HistoryEntry changed(HistoryEntry entry)
    {
        entry.title = "Changed"_s;
        entry.text = "other text"_s;
        return entry;
    }

    QByteArray fileContent()
    {
        history.reset();
        QFile file(settings.file);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
};
} // namespace

TEST_F(OpenEntriesTest, WhatMustBeSeenAndWasOpenIsReportedAfterARestart)
{
    start();
    HistoryEntry mustSee = entry("Open"_s);
    mustSee.mustSee = true;
    history->add(mustSee);
    mustSee.title = "Closed"_s;
    history->change(history->add(mustSee), State::Dismissed, {}, 5);
    history->add(entry("Ordinary"_s));

    const QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(left[0].title, "Open"_s);
    EXPECT_EQ(left[0].id, "id-Open"_s);

    history->change(left[0].number, State::Seen, {}, 9);
    EXPECT_THAT(startAgain(), IsEmpty());
    const HistoryPage read = page();
    ASSERT_THAT(titles(read), ElementsAre("Ordinary"_s, "Closed"_s, "Open"_s));
    EXPECT_EQ(read.entries[2].state, State::Seen);
    EXPECT_EQ(read.entries[2].endTime, 9);
}

TEST_F(OpenEntriesTest, WhatMustBeSeenIsReportedAfterEachRestartUntilItEnds)
{
    start();
    HistoryEntry mustSee = entry("Open"_s);
    mustSee.mustSee = true;
    history->add(mustSee);
    EXPECT_THAT(startAgain(), SizeIs(1));
    EXPECT_THAT(startAgain(), SizeIs(1));
}

TEST_F(OpenEntriesTest, WhatMustBeSeenIsReportedUntilItEndsEvenIfItsEntryHasGone)
{
    settings.maxEntries = 5;
    start();
    HistoryEntry mustSee = entry("Open"_s);
    mustSee.mustSee = true;
    history->add(mustSee);
    fill();
    const QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(left[0].title, "Open"_s);
    EXPECT_THAT(titles(page()), Not(Contains("Open"_s)));
    const QVector<HistoryEntry> again = startAgain();
    ASSERT_THAT(again, SizeIs(1));
    history->change(again[0].number, State::Seen, {}, 9);
    EXPECT_THAT(startAgain(), IsEmpty());
}

TEST_F(OpenEntriesTest, WhatMustBeSeenIsReportedAsItWasChanged)
{
    start();
    history->replace(changed(addOpen(true)));
    for (int restart = 0; restart < 2; ++restart) {
        const QVector<HistoryEntry> left = startAgain();
        ASSERT_THAT(left, SizeIs(1));
        EXPECT_EQ(left[0].title, "Changed"_s);
        EXPECT_EQ(left[0].text, "other text"_s);
    }
}

TEST_F(OpenEntriesTest, WhatMustBeSeenIsReportedAsItWasChangedEvenIfItsEntryHasGone)
{
    settings.maxEntries = 5;
    start();
    const HistoryEntry open = addOpen(true);
    history->replace(changed(open));
    fill();
    QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(left[0].title, "Changed"_s);

    left[0].title = "Again"_s;
    history->replace(left[0]);
    left = startAgain();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(left[0].title, "Again"_s);
}

TEST_F(OpenEntriesTest, WhatWasChangedIsReportedUntilItEnds)
{
    start();
    const HistoryEntry open = addOpen(true);
    history->replace(changed(open));
    history->change(open.number, State::Dismissed, {}, 5);
    EXPECT_THAT(startAgain(), IsEmpty());
    EXPECT_EQ(page().entries.first().state, State::Dismissed);
}

TEST_F(OpenEntriesTest, WhatMustBeSeenOnlySinceAChangeIsReported)
{
    start();
    HistoryEntry open = changed(addOpen(false));
    open.mustSee = true;
    history->replace(open);
    const QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(left[0].title, "Changed"_s);
    EXPECT_EQ(page().entries.first().endTime, 0);
}

TEST_F(OpenEntriesTest, WhatNeedNotBeSeenAnyMoreEndsWithTheHost)
{
    start();
    HistoryEntry open = changed(addOpen(true));
    history->replace(open);
    open.mustSee = false;
    history->replace(open);
    EXPECT_THAT(startAgain(), IsEmpty());
    EXPECT_EQ(page().entries.first().state, State::Expired);
}

TEST_F(OpenEntriesTest, AChangeLeavesTheEntryAsItCame)
{
    start();
    history->replace(changed(addOpen(true)));
    EXPECT_THAT(titles(), ElementsAre("First"_s));
    EXPECT_THAT(search("first"_s), ElementsAre("First"_s));
    EXPECT_THAT(search("changed"_s), IsEmpty());
}

TEST_F(OpenEntriesTest, WhatBecomesPrivateLeavesNoneOfItsNewText)
{
    start();
    HistoryEntry open = changed(addOpen(true));
    open.isPrivate = true;
    history->replace(open);
    const QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(left[0].title, QString());
    EXPECT_EQ(left[0].text, QString());
    const QByteArray content = fileContent();
    EXPECT_FALSE(content.contains("Changed"));
    EXPECT_FALSE(content.contains("other text"));
}

TEST_F(OpenEntriesTest, ManyChangesDoNotPushOutWhatCameBeforeWhileTheDiskIsFull)
{
    settings.betweenTries = std::chrono::hours(1);
    start();
    const HistoryEntry open = addOpen(true);
    EXPECT_THAT(titles(), ElementsAre("First"_s));
    {
        const FullDisk fullDisk;
        history->add(entry("While full"_s));
        EXPECT_TRUE(waitFor([&] { return !failed->isEmpty(); }, std::chrono::seconds(20)));
        HistoryEntry again = open;
        for (int i = 0; i < 4000; ++i) {
            again.text = QString(4000, QLatin1Char('x'));
            history->replace(again);
            if (i % 100 == 0) {
                page();
            }
        }
        again.title = "Last"_s;
        history->replace(again);
        page();
    }
    const QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(left[0].title, "Last"_s);
    EXPECT_THAT(titles(), ElementsAre("While full"_s, "First"_s));
}

TEST_F(OpenEntriesTest, OfMoreThanAThousandThatMustBeSeenTheNewestAreReported)
{
    settings.maxEntries = 5;
    start();
    HistoryEntry mustSee = entry("Open"_s);
    mustSee.mustSee = true;
    for (int i = 0; i < 1010; ++i) {
        mustSee.title = QString::number(i);
        history->add(mustSee);
    }
    const QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(1000));
    EXPECT_EQ(left.first().title, "10"_s);
    EXPECT_EQ(left.last().title, "1009"_s);
}

TEST_F(OpenEntriesTest, OfMoreThanAThousandThatMustBeSeenEachUserKeepsItsNewest)
{
    expectThatEachUserKeepsItsNewest();
}

TEST_F(OpenEntriesTest, OfMoreThanAThousandWhoseEntriesHaveGoneEachUserKeepsItsNewest)
{
    settings.maxEntries = 5;
    expectThatEachUserKeepsItsNewest();
}

TEST_F(OpenEntriesTest, WhatMustBeSeenIsReportedWithItsUser)
{
    start();
    addMany("1000"_s, 1);
    addMany({}, 1);
    QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(2));
    EXPECT_EQ(left[0].user, "1000"_s);
    EXPECT_EQ(left[1].user, QString());

    history->replace(changed(left[0]));
    settings.maxEntries = 1;
    for (int restart = 0; restart < 2; ++restart) {
        left = startAgain();
        ASSERT_THAT(left, SizeIs(2));
        EXPECT_EQ(left[0].title, "Changed"_s);
        EXPECT_EQ(left[0].user, "1000"_s);
        EXPECT_EQ(left[1].user, QString());
    }
}

TEST_F(OpenEntriesTest, WhatMustBeSeenOnlySinceAChangeIsReportedWithItsUser)
{
    start();
    HistoryEntry open = changed(addOpen(false));
    open.mustSee = true;
    open.user = "1000"_s;
    history->replace(open);
    EXPECT_THAT(titlesOf("1000"_s, startAgain()), ElementsAre("Changed"_s));
}

TEST_F(OpenEntriesTest, TheFileHasNoUsersOfWhatDoesNotComeBack)
{
    start();
    HistoryEntry open = entry("Open"_s);
    open.mustSee = true;
    open.user = "1000"_s;
    history->add(open);
    history->add(open);
    EXPECT_EQ(owners(), 2);
    const QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(2));
    history->change(left[0].number, State::Dismissed, {}, 5);
    EXPECT_EQ(owners(), 1);
    HistoryEntry other = startAgain().value(0);
    other.mustSee = false;
    history->replace(other);
    EXPECT_EQ(owners(), 0);
}

TEST_F(OpenEntriesTest, UsersThatAnOlderVersionLeftInTheFileGoAtTheStart)
{
    start();
    addMany("1000"_s, 1);
    EXPECT_EQ(run("UPDATE entries SET endTime = 5; SELECT count(*) FROM owners"), 1);
    EXPECT_THAT(startAgain(), IsEmpty());
    EXPECT_EQ(owners(), 0);
}

TEST_F(OpenEntriesTest, AFileOfAnOlderVersionHasNoUsers)
{
    start();
    addMany("1000"_s, 1);
    run("DROP TABLE owners");
    EXPECT_THAT(titlesOf({}, startAgain()), ElementsAre("0"_s));
    EXPECT_THAT(*failed, IsEmpty());
    EXPECT_THAT(*damaged, IsEmpty());
}

TEST_F(OpenEntriesTest, OtherOpenEntriesHaveEndedWithTheHost)
{
    start();
    history->add(entry("Open"_s));
    EXPECT_EQ(page().entries.first().endTime, 0);
    start();
    EXPECT_GT(page().entries.first().endTime, 0);
    EXPECT_EQ(page().entries.first().state, State::Expired);
    EXPECT_TRUE(page().entries.first().wasLeft);
}

TEST_F(OpenEntriesTest, NumbersFromBeforeTheFileWasOpenFitThoseInTheFile)
{
    start();
    const qint64 first = history->add(entry("One"_s));
    history->add(entry("Two"_s));
    start();
    const qint64 third = history->add(entry("Three"_s));
    const HistoryPage read = page();
    ASSERT_THAT(titles(read), ElementsAre("Three"_s, "Two"_s, "One"_s));
    EXPECT_EQ(read.entries[0].number, third);
    EXPECT_EQ(read.entries[2].number, third - 2);
    EXPECT_GT(first, 0);
    EXPECT_GT(read.entries[2].number, 0);
    history->change(read.entries[2].number, State::Dismissed, {}, 3);
    EXPECT_EQ(page().entries[2].state, State::Dismissed);
    HistoryQuery query;
    query.before = third;
    EXPECT_THAT(titles(query), ElementsAre("Two"_s, "One"_s));
}
