// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryTest.h"

#include <QFileInfo>

#include <gmock/gmock.h>

#include <random>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;
using testing::SizeIs;

namespace {
constexpr qint64 msPerDay = 86'400'000;

class LimitsTest : public HistoryTest
{
protected:
    void add(int count)
    {
        for (int i = 0; i < count; ++i) {
            history->add(entry(QString::number(m_next++), "text"_s));
        }
    }

    HistoryPage newest()
    {
        HistoryQuery query;
        query.limit = HistoryQuery::maxLimit;
        return page(query);
    }

private:
    int m_next = 0;
};
} // namespace

TEST_F(LimitsTest, TheOldestEntriesGoFirst)
{
    settings.maxEntries = 3;
    start();
    add(5);
    start();
    EXPECT_THAT(titles(), ElementsAre("4"_s, "3"_s, "2"_s));
    EXPECT_THAT(search("text"_s), ElementsAre("4"_s, "3"_s, "2"_s));
}

TEST_F(LimitsTest, WhatIsRemovedIsNoLongerFoundByItsWords)
{
    settings.maxEntries = 0;
    start();
    history->add(entry("Removed"_s));
    start();
    EXPECT_THAT(titles(), IsEmpty());
    settings.maxEntries = 10;
    start();
    history->add(entry("Kept"_s));
    start();
    EXPECT_THAT(search("removed"_s), IsEmpty());
    EXPECT_THAT(search("kept"_s), ElementsAre("Kept"_s));
}

TEST_F(LimitsTest, ALowerLimitIsReachedWithoutNewEntries)
{
    start();
    add(150);
    settings.maxEntries = 1;
    start();
    add(1);
    EXPECT_TRUE(waitFor([&] { return titles().size() == 1; }));
}

TEST_F(LimitsTest, OldEntriesGoWhenAnotherComes)
{
    settings.maxDays = 2;
    start();
    HistoryEntry old = entry("Old"_s);
    old.time -= 3 * msPerDay;
    HistoryEntry recent = entry("Recent"_s);
    recent.time -= msPerDay;
    history->add(old);
    history->add(recent);
    start();
    EXPECT_THAT(titles(), ElementsAre("Recent"_s));
}

TEST_F(LimitsTest, OldEntriesGoAlsoBehindThoseOfAClockThatWasAhead)
{
    settings.maxDays = 2;
    start();
    for (const qint64 days : {3000, 3000, -3, 3000, -1}) {
        HistoryEntry jumped = entry(QString::number(days));
        jumped.time += days * msPerDay;
        history->add(jumped);
    }
    start();
    EXPECT_THAT(titles(), ElementsAre("-1"_s, "3000"_s));
}

TEST_F(LimitsTest, EntriesKeepTheirOrderWhenTheClockJumps)
{
    start();
    for (const qint64 days : {0, 300, -10, 20, 0}) {
        HistoryEntry jumped = entry(QString::number(days));
        jumped.time += days * msPerDay;
        history->add(jumped);
    }
    start();
    EXPECT_THAT(titles(), ElementsAre("0"_s, "20"_s, "-10"_s, "300"_s, "0"_s));
}

TEST_F(LimitsTest, TheFileStaysAboutAsLargeAsItMay)
{
    settings.maxBytes = 300'000;
    start();
    for (int i = 0; i < 60; ++i) {
        history->add(entry(QString::number(i), QString("word%1 "_s).arg(i).repeated(500)));
    }
    EXPECT_TRUE(waitFor([&] { return newest().entries.size() < 50; }));
    EXPECT_EQ(newest().entries.first().title, "59"_s);
    history.reset();
    EXPECT_THAT(QFileInfo(settings.file).size(), Le(2 * settings.maxBytes));
}

TEST_F(LimitsTest, TheFileGrowsNoLongerHoweverLongAFloodLasts)
{
    settings.maxBytes = 1'000'000;
    start();
    std::mt19937_64 random(1);
    const auto flood = [&](int rounds) {
        for (int round = 0; round < rounds; ++round) {
            for (int i = 0; i < 1000; ++i) { // in a transaction
                QString text;
                for (int word = 0; word < 30; ++word) {
                    text += QString::number(random(), 36) + ' ';
                }
                history->add(entry("Flood"_s, text));
            }
            start(); // everything is written
        }
        return QFileInfo(settings.file).size();
    };
    const qint64 size = flood(5);
    EXPECT_THAT(flood(10), Le(size + settings.maxBytes));
}

TEST_F(LimitsTest, APageOfLongTextsEndsEarlySoThatItFitsIntoAMessage)
{
    constexpr int count = 60;
    constexpr int maxBytes = 65536;
    start();
    for (int i = 0; i < count; ++i) {
        history->add(entry(QString::number(i), QString(4000, QChar(0x20AC))));
    }
    HistoryQuery query;
    int read = 0;
    do {
        const HistoryPage part = page(query);
        int bytes = 0;
        for (const HistoryEntry &entry : part.entries) {
            bytes += entry.title.toUtf8().size() + entry.text.toUtf8().size();
        }
        EXPECT_LE(bytes, maxBytes);
        EXPECT_FALSE(part.entries.isEmpty());
        read += part.entries.size();
        query.before = part.next;
    } while (query.before != 0);
    EXPECT_EQ(read, count);
}

TEST_F(LimitsTest, APageOfUsualTextsHasAsManyEntriesAsWereAskedFor)
{
    const QString usual(400, QLatin1Char('x'));
    start();
    for (int i = 0; i < HistoryQuery::maxLimit + 1; ++i) {
        history->add(entry(QString::number(i), usual));
    }
    EXPECT_THAT(page().entries, SizeIs(50));
    EXPECT_THAT(newest().entries, SizeIs(HistoryQuery::maxLimit));
}

TEST_F(LimitsTest, LongTextsAreCutBetweenCharacters)
{
    constexpr int mebi = 1 << 20;
    const QString bell = "\U0001F514"_s;
    HistoryEntry added = entry("x"_s + bell.repeated(mebi), bell.repeated(mebi));
    added.source = QString(mebi, QLatin1Char('s'));
    added.id = QString(mebi, QLatin1Char('i'));
    start();
    const qint64 number = history->add(added);
    history->change(number, State::ActedOn, QString(mebi, QLatin1Char('a')), 1);
    const HistoryPage read = page();
    ASSERT_THAT(read.entries, SizeIs(1));
    EXPECT_EQ(read.entries[0].title, "x"_s + bell.repeated(499));
    EXPECT_EQ(read.entries[0].text, bell.repeated(2000));
    EXPECT_EQ(read.entries[0].source.size(), 256);
    EXPECT_EQ(read.entries[0].id.size(), 256);
    EXPECT_EQ(read.entries[0].action.size(), 256);
}

TEST_F(LimitsTest, PrivateEntriesLeaveNoText)
{
    HistoryEntry added = entry("Secret title"_s, "Secret text"_s);
    added.id = "7"_s;
    added.isPrivate = true;
    start();
    history->add(added);
    const HistoryPage read = page();
    ASSERT_THAT(read.entries, SizeIs(1));
    EXPECT_TRUE(read.entries[0].isPrivate);
    EXPECT_EQ(read.entries[0].title, ""_s);
    EXPECT_EQ(read.entries[0].text, ""_s);
    EXPECT_THAT(search("secret"_s), IsEmpty());
    EXPECT_THAT(search("mail"_s), SizeIs(1));
    history.reset();
    QFile file(settings.file);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().contains("Secret"));
}
