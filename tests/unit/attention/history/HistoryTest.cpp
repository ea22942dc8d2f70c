// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryTest.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(HistoryTest, APageHasWhatWasAddedBeforeItNewestFirst)
{
    start();
    history->add(entry("One"_s));
    history->add(entry("Two"_s));

    EXPECT_THAT(titles(), ElementsAre("Two"_s, "One"_s));
}

TEST_F(HistoryTest, AnEntryComesBackAsItWasAdded)
{
    HistoryEntry added;
    added.id = "7"_s;
    added.time = QDateTime::currentMSecsSinceEpoch();
    added.source = "org.example.door"_s;
    added.application = "Tür"_s;
    added.category = "call"_s;
    added.group = "door"_s;
    added.priority = -3;
    added.title = "Jemand läutet \U0001F514"_s;
    added.text = "line 1\nline 2"_s;
    added.state = State::ActedOn;
    added.action = "open"_s;
    added.endTime = 1'700'000'000'456;
    added.mustSee = true;
    start();
    history->add(added);
    start();

    const HistoryPage read = page();
    ASSERT_THAT(read.entries, SizeIs(1));
    const HistoryEntry &entry = read.entries.first();
    EXPECT_EQ(entry.id, added.id);
    EXPECT_EQ(entry.time, added.time);
    EXPECT_EQ(entry.source, added.source);
    EXPECT_EQ(entry.application, added.application);
    EXPECT_EQ(entry.category, added.category);
    EXPECT_EQ(entry.group, added.group);
    EXPECT_EQ(entry.priority, added.priority);
    EXPECT_EQ(entry.title, added.title);
    EXPECT_EQ(entry.text, added.text);
    EXPECT_EQ(entry.state, added.state);
    EXPECT_EQ(entry.action, added.action);
    EXPECT_EQ(entry.endTime, added.endTime);
    EXPECT_EQ(entry.mustSee, added.mustSee);
    EXPECT_FALSE(entry.isPrivate);
}

TEST_F(HistoryTest, AChangeSaysWhatBecameOfAnEntry)
{
    start();
    const qint64 number = history->add(entry("One"_s));
    history->change(number, State::ActedOn, "reply"_s, 5);
    start();

    const HistoryPage read = page();
    ASSERT_THAT(read.entries, SizeIs(1));
    EXPECT_EQ(read.entries[0].state, State::ActedOn);
    EXPECT_EQ(read.entries[0].action, "reply"_s);
    EXPECT_EQ(read.entries[0].endTime, 5);
}

TEST_F(HistoryTest, PagesFollowEachOtherToTheOldestEntry)
{
    start();
    for (int i = 0; i < 25; ++i) {
        history->add(entry(QString::number(i)));
    }
    QStringList read;
    HistoryQuery query;
    query.limit = 10;
    int pages = 0;
    do {
        const HistoryPage page = this->page(query);
        read += titles(page);
        query.before = page.next;
        ++pages;
    } while (query.before != 0);

    EXPECT_EQ(pages, 3);
    ASSERT_THAT(read, SizeIs(25));
    EXPECT_EQ(read.first(), "24"_s);
    EXPECT_EQ(read.last(), "0"_s);
    EXPECT_EQ(read.removeDuplicates(), 0);
}

TEST_F(HistoryTest, ASearchFindsEntriesWithAWordForEachBeginning)
{
    start();
    history->add(entry("Backup done"_s, "Copied 17 files"_s));
    history->add(entry("Backup failed"_s, "Disk is full"_s));
    history->add(entry("Café"_s, "Öffnet um 8"_s));

    EXPECT_THAT(search("backup"_s), ElementsAre("Backup failed"_s, "Backup done"_s));
    EXPECT_THAT(search("back fi"_s), ElementsAre("Backup done"_s));
    EXPECT_THAT(search("mail full"_s), ElementsAre("Backup failed"_s));
    EXPECT_THAT(search("CAFE offnet"_s), ElementsAre("Café"_s));
    EXPECT_THAT(search("b backup B back f c"_s), ElementsAre("Backup done"_s));
    EXPECT_THAT(search("b backups"_s), IsEmpty());
    EXPECT_THAT(search("ackup"_s), IsEmpty());
    EXPECT_THAT(search(" "_s), SizeIs(3));
}

TEST_F(HistoryTest, MissedIsWhatExpiredOrWasSilencedUntilItIsMarkedAsSeen)
{
    start();
    QSignalSpy changed(history.get(), &History::missedChanged);
    HistoryEntry silenced = entry("Silenced"_s);
    silenced.state = State::Silenced;
    history->add(silenced);
    const qint64 shown = history->add(entry("Shown"_s));
    HistoryEntry other = entry("Other"_s);
    other.state = State::Dismissed;
    other.endTime = 5;
    history->add(other);
    EXPECT_TRUE(waitFor([&] { return history->missed() == 1; }));
    history->change(shown, State::Expired, {}, 5);
    EXPECT_TRUE(waitFor([&] { return history->missed() == 2; }));
    EXPECT_THAT(changed, SizeIs(2));

    HistoryQuery query;
    query.onlyMissed = true;
    EXPECT_THAT(titles(query), ElementsAre("Shown"_s, "Silenced"_s));
    history->markSeen(shown - 1, shown);
    EXPECT_THAT(titles(query), ElementsAre("Shown"_s, "Silenced"_s));
    history->markSeen(shown - 1, shown - 1);
    EXPECT_THAT(titles(query), ElementsAre("Shown"_s));
    start();
    EXPECT_TRUE(waitFor([&] { return history->missed() == 1; }));
    const HistoryPage missed = page(query);
    ASSERT_THAT(titles(missed), ElementsAre("Shown"_s));
    history->markSeen(missed.entries.first().number);
    EXPECT_THAT(titles(query), IsEmpty());
    EXPECT_TRUE(waitFor([&] { return history->missed() == 0; }));
}

TEST_F(HistoryTest, OnlyWhatIsInOneOfTheRangesIsMarkedAsSeen)
{
    start();
    QVector<qint64> numbers;
    for (int i = 0; i < 8; ++i) {
        HistoryEntry silenced = entry(QString::number(i));
        silenced.state = State::Silenced;
        numbers.append(history->add(silenced));
    }
    const auto markSeen = [&](int from, int upTo) {
        history->markSeen(numbers[upTo], numbers[from]);
    };
    markSeen(1, 2);
    markSeen(2, 3);
    markSeen(5, 5);
    markSeen(7, 7);
    HistoryQuery query;
    query.onlyMissed = true;
    EXPECT_THAT(titles(query), ElementsAre("6"_s, "4"_s, "0"_s));
}

TEST_F(HistoryTest, ASearchTakesAnyText)
{
    start();
    history->add(entry("It's \"quoted\" (twice) AND near"_s));
    for (const char *text : {"\"", "\"quoted", "(", "AND", "it's AND", "NEAR(", "*", "-", "title:",
                             "{", "\xEF\xBF\xBF", "''", "quoted\"\" twice", "^it", "+near"}) {
        HistoryQuery query;
        query.text = QString::fromUtf8(text);
        query.source = query.text;
        page(query);
        query.source.clear();
        page(query);
    }
    HistoryQuery query;
    query.text = "a"_s + QChar(0) + "\""_s + QChar(0xD800) + " b"_s.repeated(10000);
    page(query);
    query.source = "s"_s.repeated(5 << 20);
    query.text = query.source;
    page(query);
    EXPECT_THAT(search("quoted twice"_s), SizeIs(1));
    EXPECT_THAT(search("(TWICE"_s), SizeIs(1));
    EXPECT_THAT(*damaged, IsEmpty());
    EXPECT_THAT(*failed, IsEmpty());
}

TEST_F(HistoryTest, APageIsOfOneSourceIfThatIsWanted)
{
    start();
    for (const char *source :
         {"org.example.mail", "org.example.mail.other", "org.example", "\u00fc", "..."}) {
        HistoryEntry added = entry(source);
        added.source = source;
        history->add(added);
    }
    for (const char *source : {"org.example.mail", "org.example", "\u00fc", "..."}) {
        HistoryQuery query;
        query.source = source;
        EXPECT_THAT(titles(query), ElementsAre(QString(source)));
        query.text = query.source;
        query.onlyMissed = true;
        EXPECT_THAT(titles(query), IsEmpty());
    }
}

TEST_F(HistoryTest, APageHasFromOneToTwoHundredEntries)
{
    start();
    for (int i = 0; i < 250; ++i) {
        history->add(entry(QString::number(i)));
    }
    HistoryQuery query;
    query.limit = 1000;
    EXPECT_THAT(titles(query), SizeIs(200));
    query.limit = 0;
    EXPECT_THAT(titles(query), SizeIs(1));
    query.limit = -5;
    query.before = std::numeric_limits<qint64>::min();
    EXPECT_THAT(titles(query), ElementsAre("249"_s));
    query.before = std::numeric_limits<qint64>::max();
    EXPECT_THAT(titles(query), ElementsAre("249"_s));
}

TEST_F(HistoryTest, ASearchFindsWhatIsManyEntriesBack)
{
    constexpr int others = 2000;
    settings.maxBytes = 1'000'000; // the index has several blocks then
    start();
    history->add(entry("needle"_s));
    for (int i = 0; i < others; ++i) {
        history->add(entry("hay"_s));
    }
    EXPECT_THAT(search("needle"_s), ElementsAre("needle"_s));
    EXPECT_THAT(search("hay"_s), SizeIs(50));
}
