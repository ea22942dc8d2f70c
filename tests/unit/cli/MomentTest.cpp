// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/Moment.h"

#include <QTimeZone>

#include <gtest/gtest.h>

namespace {
QDateTime berlin(const char *text)
{
    return QDateTime(QDate::fromString(QString(text).left(10), "yyyy-MM-dd"),
                     QTime::fromString(QString(text).mid(11), "HH:mm"), QTimeZone("Europe/Berlin"));
}

/// The time that the text means at that moment; empty if it means none.
std::string read(const char *text, const char *now = "2026-11-22 15:30")
{
    const auto result = momentFromText(text, berlin(now));
    const auto *moment = std::get_if<QDateTime>(&result);
    return moment == nullptr ? std::string() : moment->toString("yyyy-MM-dd HH:mm").toStdString();
}

std::string refusal(const char *text)
{
    const auto result = momentFromText(text, berlin("2026-11-22 15:30"));
    const auto *failure = std::get_if<Failure>(&result);
    return failure == nullptr ? std::string() : failure->reason.toStdString();
}
} // namespace

TEST(MomentTest, ReadsTheNextTimeOfTheClock)
{
    EXPECT_EQ(read("18:00"), "2026-11-22 18:00");
    EXPECT_EQ(read("7:00"), "2026-11-23 07:00");
    EXPECT_EQ(read("15:30"), "2026-11-23 15:30") << "now is over";
    EXPECT_EQ(read("07:00", "2026-12-31 22:00"), "2027-01-01 07:00");
}

TEST(MomentTest, ReadsADateAndATime)
{
    EXPECT_EQ(read("2026-12-24 18:00"), "2026-12-24 18:00");
    EXPECT_EQ(read("2026-12-24T18:00"), "2026-12-24 18:00");
    EXPECT_EQ(read("2026-12-24 8:00"), "2026-12-24 08:00");
    EXPECT_EQ(refusal("2026-11-22 15:00"), "2026-11-22 15:00 is over");
    EXPECT_EQ(refusal("2028-01-01 00:00"), "2028-01-01 00:00 is more than 366 days from now");
}

TEST(MomentTest, ReadsTheFormatsOfIso8601)
{
    for (const char *text :
         {"2026-12-24T18:00:00", "2026-12-24T18:00:00.000", "2026-12-24T17:00Z",
          "2026-12-24T17:00:00Z", "2026-12-24 17:00:00Z", "2026-12-24T17:00:00.000Z",
          "2026-12-24T18:00:00+01:00", "2026-12-24T12:00:00-0500"}) {
        EXPECT_EQ(read(text), "2026-12-24 18:00") << text;
    }
    EXPECT_EQ(refusal("2026-11-22T14:29:59Z"), "2026-11-22T14:29:59Z is over");
}

TEST(MomentTest, ReadsSeconds)
{
    const auto now = berlin("2026-11-22 15:30");
    const auto seconds = [&now](const char *text) {
        return now.secsTo(std::get<QDateTime>(momentFromText(text, now)));
    };
    EXPECT_EQ(seconds("15:30:05"), 5);
    EXPECT_EQ(seconds("2026-11-22 15:31:05"), 65);
    EXPECT_EQ(seconds("2026-11-22T14:30:07Z"), 7);
}

TEST(MomentTest, ReadsADuration)
{
    EXPECT_EQ(read("2h"), "2026-11-22 17:30");
    EXPECT_EQ(read("30m"), "2026-11-22 16:00");
    EXPECT_EQ(read("1d1h30m60s"), "2026-11-23 17:01");
    EXPECT_EQ(refusal("0m"), "0m is over");
    EXPECT_EQ(refusal("99999d"), "99999d is more than 366 days from now");
}

TEST(MomentTest, CountsTheHourThatClocksRepeat)
{
    EXPECT_EQ(read("4h", "2026-10-25 00:30"), "2026-10-25 03:30");
    EXPECT_EQ(read("07:00", "2026-10-24 23:00"), "2026-10-25 07:00");
}

TEST(MomentTest, RefusesOtherTexts)
{
    for (const char *text : {"", "noon", "25:00", "7", "h", "-2h", "2 h", "2026-13-01 00:00",
                             "2026-12-24", "2026-12-24T", "2026-12-24T18:00X"}) {
        EXPECT_NE(refusal(text).find("is not a time"), std::string::npos) << text;
    }
}

TEST(MomentTest, IsWrittenWithItsDateUnlessItIsToday)
{
    EXPECT_EQ(momentText(berlin("2026-11-22 18:00"), berlin("2026-11-22 15:30")), "18:00");
    EXPECT_EQ(momentText(berlin("2026-11-23 07:00"), berlin("2026-11-22 15:30")),
              "2026-11-23 07:00");
}
