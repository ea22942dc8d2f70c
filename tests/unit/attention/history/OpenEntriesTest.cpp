// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryTest.h"

#include <gmock/gmock.h>

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
    for (int i = 0; i < 10; ++i) {
        history->add(entry("Newer"_s));
    }
    const QVector<HistoryEntry> left = startAgain();
    ASSERT_THAT(left, SizeIs(1));
    EXPECT_EQ(left[0].title, "Open"_s);
    EXPECT_THAT(titles(page()), Not(Contains("Open"_s)));
    const QVector<HistoryEntry> again = startAgain();
    ASSERT_THAT(again, SizeIs(1));
    history->change(again[0].number, State::Seen, {}, 9);
    EXPECT_THAT(startAgain(), IsEmpty());
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
