// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryTest.h"
#include "support/FullDisk.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

#include <numeric>
#include <sys/stat.h>

using testing::Contains;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::SizeIs;

namespace {
class FailuresTest : public HistoryTest
{
protected:
    FailuresTest() { settings.betweenTries = std::chrono::milliseconds(50); }

    QString reason() const
    {
        return failed->isEmpty() ? QString() : failed->first().first().toString();
    }

    void useFolderThatIsAFile()
    {
        QFile file(folder.filePath("state"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        settings.file = folder.filePath("state/history.db"_s);
    }

    void makeRoomForFolder() { ASSERT_TRUE(QFile::remove(folder.filePath("state"_s))); }

    /// Adds entries of this user, whose source has the same name, until too much waits.
    void flood(const QString &user)
    {
        constexpr int count = 5000;
        HistoryEntry large = entry("Large"_s, QString(1000, QLatin1Char('x')));
        large.user = user;
        large.source = user;
        for (int i = 1; i < count; ++i) {
            history->add(large);
        }
        large.title = "Last"_s;
        history->add(large);
    }

    HistoryPage pageOf(const QString &source)
    {
        HistoryQuery query;
        query.source = source;
        return page(query);
    }

    bool waitForEvents(const QSignalSpy &spy, int count)
    {
        return waitFor([&] { return spy.size() >= count; }, std::chrono::seconds(20));
    }
};
} // namespace

TEST_F(FailuresTest, OnAFullDiskItGoesOnInMemoryAndLosesNothingWhenThereIsRoomAgain)
{
    start();
    history->add(entry("Before"_s));
    EXPECT_THAT(titles(), ElementsAre("Before"_s));
    {
        const FullDisk fullDisk;
        HistoryEntry silenced = entry("While full"_s);
        silenced.state = State::Silenced;
        history->add(silenced);
        EXPECT_TRUE(waitForEvents(*failed, 1));
        EXPECT_THAT(titles(), ElementsAre("While full"_s, "Before"_s));
        EXPECT_THAT(search("while"_s), ElementsAre("While full"_s));
        EXPECT_EQ(history->missed(), 1);
    }
    EXPECT_TRUE(waitForEvents(*recovered, 1));
    EXPECT_EQ(recovered->first().first().toInt(), 0);
    EXPECT_THAT(*failed, SizeIs(1));
    start();

    EXPECT_THAT(titles(), ElementsAre("While full"_s, "Before"_s));
    EXPECT_TRUE(waitFor([&] { return history->missed() == 2; })) << "the other one was open";
    EXPECT_THAT(*failed, IsEmpty());
    EXPECT_THAT(*damaged, IsEmpty());
}

TEST_F(FailuresTest, WhatCouldNotBeWrittenIsAppliedOnceAgain)
{
    settings.betweenTries = std::chrono::hours(1);
    start();
    EXPECT_THAT(titles(), IsEmpty());
    {
        const FullDisk fullDisk;
        HistoryEntry silenced = entry("While full"_s);
        silenced.state = State::Silenced;
        history->add(silenced);
        EXPECT_TRUE(waitForEvents(*failed, 1));
        EXPECT_THAT(search("while"_s), ElementsAre("While full"_s));
        EXPECT_EQ(history->missed(), 1);
        history->add(entry("Another"_s));
        EXPECT_THAT(titles(), ElementsAre("Another"_s, "While full"_s));
        EXPECT_EQ(history->missed(), 1);
        EXPECT_THAT(*damaged, IsEmpty());
    }
    start();
    EXPECT_THAT(titles(), ElementsAre("Another"_s, "While full"_s));
    EXPECT_EQ(history->missed(), 2) << "the other one was open";
}

TEST_F(FailuresTest, AFailureIsSaidOnceHoweverOftenItIsTried)
{
    useFolderThatIsAFile();
    start();
    for (int i = 0; i < 5; ++i) {
        history->add(entry(QString::number(i)));
        waitFor([] { return false; }, std::chrono::milliseconds(60));
    }
    EXPECT_THAT(titles(), SizeIs(5));
    EXPECT_THAT(*failed, SizeIs(1));
    EXPECT_TRUE(reason().contains(settings.file)) << reason().toStdString();
}

TEST_F(FailuresTest, AFileThatCanNotBeOpenedIsReplacedByMemoryUntilItCan)
{
    useFolderThatIsAFile();
    start();
    HistoryEntry silenced = entry("One"_s);
    silenced.state = State::Silenced;
    const qint64 number = history->add(silenced);
    history->add(entry("Two"_s));
    EXPECT_THAT(titles(), ElementsAre("Two"_s, "One"_s));
    EXPECT_TRUE(waitFor([&] { return history->missed() == 1; }));
    history->markSeen(number);
    EXPECT_TRUE(waitFor([&] { return history->missed() == 0; }));
    EXPECT_TRUE(waitForEvents(*failed, 1));

    makeRoomForFolder();
    EXPECT_TRUE(waitForEvents(*recovered, 1));
    history->change(number, State::Dismissed, {}, 7);
    start();
    const HistoryPage read = page();
    ASSERT_THAT(titles(read), ElementsAre("Two"_s, "One"_s));
    EXPECT_EQ(read.entries[1].state, State::Dismissed);
}

TEST_F(FailuresTest, WhatWaitsIsBoundedAndTheNewestIsKeptAndTheLostAreCounted)
{
    constexpr int count = 10000;
    useFolderThatIsAFile();
    start();
    const QString text(1000, QLatin1Char('x'));
    for (int i = 0; i < count; ++i) {
        history->add(entry(QString::number(i), text));
    }
    makeRoomForFolder();
    ASSERT_TRUE(waitForEvents(*recovered, 1));
    QStringList read;
    HistoryQuery query;
    query.limit = HistoryQuery::maxLimit;
    do {
        const HistoryPage page = this->page(query);
        read += titles(page);
        query.before = page.next;
    } while (query.before != 0);
    EXPECT_EQ(read.first(), QString::number(count - 1));
    EXPECT_LT(read.size(), count / 2);
    // What the writer had taken before too much waited may have been written, too, so only these are certain.
    constexpr int kept = 500;
    EXPECT_EQ(read.value(kept - 1), QString::number(count - kept));
    EXPECT_TRUE(waitFor([&] {
        return std::accumulate(recovered->begin(), recovered->end(), read.size(),
                               [](int sum, const QList<QVariant> &arguments) {
                                   return sum + arguments.first().toInt();
                               }) == count;
    }));
}

TEST_F(FailuresTest, WhoSendsTooMuchPushesNothingOfOthersOut)
{
    useFolderThatIsAFile();
    start();
    HistoryEntry small = entry("Small"_s);
    small.user = "1000"_s;
    small.source = small.user;
    history->change(history->add(small), State::Dismissed, {}, 5, small.user);
    flood("1001"_s);
    makeRoomForFolder();
    ASSERT_TRUE(waitForEvents(*recovered, 1));
    const HistoryPage read = pageOf("1000"_s);
    ASSERT_THAT(titles(read), ElementsAre("Small"_s));
    EXPECT_EQ(read.entries[0].state, State::Dismissed);
    EXPECT_EQ(read.entries[0].endTime, 5);
}

TEST_F(FailuresTest, OfTwoWhoSendTooMuchTheNewestOfEachIsKept)
{
    useFolderThatIsAFile();
    start();
    flood("1000"_s);
    flood("1001"_s);
    makeRoomForFolder();
    ASSERT_TRUE(waitForEvents(*recovered, 1));
    for (const QString &user : {"1000"_s, "1001"_s}) {
        const HistoryPage read = pageOf(user);
        EXPECT_THAT(titles(read), SizeIs(Ge(30)));
        EXPECT_EQ(titles(read).value(0), "Last"_s);
    }
}

TEST_F(FailuresTest, ManyRequestsToMarkAsSeenPushNothingOut)
{
    constexpr int count = 20000;
    useFolderThatIsAFile();
    start();
    ASSERT_TRUE(waitForEvents(*failed, 1));
    HistoryEntry silenced = entry("First"_s);
    silenced.state = State::Silenced;
    const qint64 first = history->add(silenced);
    history->markSeen(first);
    silenced.title = "Second"_s;
    const qint64 second = history->add(silenced);
    for (int i = 0; i < count; ++i) {
        history->markSeen(second + count, second + 1);
    }
    makeRoomForFolder();
    ASSERT_TRUE(waitForEvents(*recovered, 1));
    HistoryQuery query;
    query.onlyMissed = true;
    EXPECT_THAT(titles(query), ElementsAre("Second"_s));
}

TEST_F(FailuresTest, WhatIsWaitingAtTheEndIsWritten)
{
    useFolderThatIsAFile();
    settings.betweenTries = std::chrono::hours(1);
    start();
    history->add(entry("One"_s));
    EXPECT_TRUE(waitForEvents(*failed, 1));
    makeRoomForFolder();
    start();
    EXPECT_THAT(titles(), ElementsAre("One"_s));
}

TEST_F(FailuresTest, ASecondHistoryOnTheFileSaysSoAndRemembersNothing)
{
    start();
    history->add(entry("First"_s));
    EXPECT_THAT(titles(), ElementsAre("First"_s));
    {
        History second(settings);
        QSignalSpy secondFailed(&second, &History::failed);
        second.add(entry("Second"_s));
        ASSERT_TRUE(waitForEvents(secondFailed, 1));
        EXPECT_TRUE(secondFailed.first().first().toString().contains("another process"_s));
        std::optional<Result<HistoryPage>> result;
        second.page({}, [&](const Result<HistoryPage> &page) { result = page; });
        ASSERT_TRUE(waitFor([&] { return result.has_value(); }));
        EXPECT_TRUE(std::holds_alternative<Failure>(*result));
        EXPECT_THAT(secondFailed, SizeIs(1));
    }
    start();
    EXPECT_THAT(titles(), ElementsAre("First"_s));
}

TEST_F(FailuresTest, AFifoIsNotUsedAndNothingWaitsForIt)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(settings.file).constData(), 0600), 0);
    start();
    history->add(entry("One"_s));
    EXPECT_TRUE(waitForEvents(*failed, 1));
    EXPECT_TRUE(reason().contains("not a regular file"_s));
}

TEST_F(FailuresTest, WithoutAFileNothingIsRemembered)
{
    settings.file.clear();
    start();
    EXPECT_EQ(history->add(entry("One"_s)), 0);
    history->change(0, State::Seen, {}, 1);
    history->markSeen(1);
    EXPECT_TRUE(std::holds_alternative<Failure>(answer({})));
    EXPECT_THAT(*failed, IsEmpty());
}

TEST_F(FailuresTest, OnlyTheUserCanReadTheFolderAndItsFiles)
{
    settings.file = folder.filePath("state/history.db"_s);
    const mode_t old = ::umask(0);
    start();
    history->add(entry("One"_s));
    EXPECT_THAT(titles(), SizeIs(1));
    ::umask(old);
    const QDir state(folder.filePath("state"_s));
    struct stat status
    {
    };
    ASSERT_EQ(::stat(QFile::encodeName(state.path()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    const QStringList names = state.entryList(QDir::Files);
    EXPECT_THAT(names, Contains("history.db"_s));
    for (const QString &name : names) {
        ASSERT_EQ(::stat(QFile::encodeName(state.filePath(name)).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U) << name.toStdString();
    }
}
