// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "unit/attention/decisions/AttentionTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
WeeklyTimes timesOf(const char *list, const char *zone = "Europe/Berlin")
{
    auto configuration = TavoConfiguration::fromJson(QByteArray(R"({"times": )") + list + "}",
                                                     QStringLiteral("times.json"));
    return WeeklyTimes::read(configuration, QStringLiteral("times"), QTimeZone(zone));
}

const char *const nights = R"([{"from": "22:00", "to": "07:00"}])";

TEST(WeeklyTimesTest, ContainsATimeBetweenItsEnds)
{
    const WeeklyTimes times = timesOf(R"([{"from": "12:00", "to": "14:00"}])");
    EXPECT_FALSE(times.contains(at("2026-11-23T11:59:59+01:00")));
    EXPECT_TRUE(times.contains(at("2026-11-23T12:00:00+01:00")));
    EXPECT_TRUE(times.contains(at("2026-11-23T13:59:59+01:00")));
    EXPECT_FALSE(times.contains(at("2026-11-23T14:00:00+01:00")));
}

TEST(WeeklyTimesTest, GoesOverMidnight)
{
    const WeeklyTimes times = timesOf(nights);
    EXPECT_TRUE(times.contains(at("2026-11-23T23:00:00+01:00")));
    EXPECT_TRUE(times.contains(at("2026-11-24T06:59:00+01:00")));
    EXPECT_FALSE(times.contains(at("2026-11-24T07:00:00+01:00")));
}

TEST(WeeklyTimesTest, BelongsToTheDayOnWhichItBegins)
{
    const WeeklyTimes times = timesOf(R"([{"days": ["fri"], "from": "22:00", "to": "07:00"}])");
    EXPECT_FALSE(times.contains(at("2026-11-27T06:00:00+01:00"))); // a Friday
    EXPECT_TRUE(times.contains(at("2026-11-27T22:30:00+01:00")));
    EXPECT_TRUE(times.contains(at("2026-11-28T06:00:00+01:00")));
    EXPECT_FALSE(times.contains(at("2026-11-28T22:30:00+01:00")));
}

TEST(WeeklyTimesTest, LastsADayIfItsEndsAreEqual)
{
    const WeeklyTimes times = timesOf(R"([{"days": ["Sun"], "from": "08:00", "to": "08:00"}])");
    EXPECT_EQ(times.nextChange(at("2026-11-22T08:00:00+01:00")), at("2026-11-23T08:00:00+01:00"));
}

TEST(WeeklyTimesTest, CountsByTheClockOfItsZone)
{
    const WeeklyTimes times = timesOf(nights, "Asia/Tokyo");
    EXPECT_TRUE(times.contains(at("2026-11-23T14:00:00Z")));
    EXPECT_FALSE(times.contains(at("2026-11-23T23:00:00Z")));
}

TEST(WeeklyTimesTest, TellsItsNextChangeFromInsideAndOutside)
{
    const WeeklyTimes times = timesOf(nights);
    EXPECT_EQ(times.nextChange(at("2026-11-23T12:00:00+01:00")), at("2026-11-23T22:00:00+01:00"));
    EXPECT_EQ(times.nextChange(at("2026-11-23T22:00:00+01:00")), at("2026-11-24T07:00:00+01:00"));
    EXPECT_EQ(times.nextChange(at("2026-11-24T06:59:59+01:00")), at("2026-11-24T07:00:00+01:00"));
}

TEST(WeeklyTimesTest, JoinsTimesThatTouch)
{
    const WeeklyTimes times =
        timesOf(R"([{"from": "20:00", "to": "24:00"}, {"from": "00:00", "to": "06:00"}])");
    EXPECT_EQ(times.nextChange(at("2026-11-23T21:00:00+01:00")), at("2026-11-24T06:00:00+01:00"));
}

TEST(WeeklyTimesTest, NeverChangesIfItIsEmptyOrAlways)
{
    EXPECT_EQ(timesOf("[]").nextChange(at("2026-11-23T21:00:00Z")), std::nullopt);
    const WeeklyTimes always = timesOf(R"([{"from": "00:00", "to": "24:00"}])");
    EXPECT_TRUE(always.contains(at("2026-11-23T21:00:00Z")));
    EXPECT_EQ(always.nextChange(at("2026-11-23T21:00:00Z")), std::nullopt);
}

// In 2026, Berlin's clocks go from 02:00 to 03:00 on 29 March, and from 03:00 to 02:00 on 25 October.

TEST(WeeklyTimesTest, BeginsWhenTheClocksSkipItsBeginning)
{
    const WeeklyTimes times = timesOf(R"([{"from": "02:30", "to": "05:00"}])");
    EXPECT_FALSE(times.contains(at("2026-03-29T00:59:59Z")));
    EXPECT_TRUE(times.contains(at("2026-03-29T01:00:00Z")));
    EXPECT_EQ(times.nextChange(at("2026-03-29T00:00:00Z")), at("2026-03-29T01:00:00Z"));
}

TEST(WeeklyTimesTest, EndsWhenTheClocksSkipItsEnd)
{
    const WeeklyTimes times = timesOf(R"([{"from": "23:00", "to": "02:30"}])");
    EXPECT_EQ(times.nextChange(at("2026-03-28T23:00:00Z")), at("2026-03-29T01:00:00Z"));
}

TEST(WeeklyTimesTest, IsOneStretchOnTheNightThatHasAnHourTwice)
{
    const WeeklyTimes times = timesOf(R"([{"from": "22:00", "to": "02:30"}])");
    // 02:30 comes at 00:30 UTC and again at 01:30 UTC.
    EXPECT_EQ(times.nextChange(at("2026-10-24T21:00:00Z")), at("2026-10-25T01:30:00Z"));
    EXPECT_TRUE(times.contains(at("2026-10-25T00:45:00Z")));
}

TEST(WeeklyTimesTest, BeginsAtTheFirstOfTwoEqualTimes)
{
    const WeeklyTimes times = timesOf(R"([{"from": "02:30", "to": "06:00"}])");
    EXPECT_EQ(times.nextChange(at("2026-10-24T21:00:00Z")), at("2026-10-25T00:30:00Z"));
    EXPECT_EQ(times.nextChange(at("2026-10-25T00:30:00Z")), at("2026-10-25T05:00:00Z"));
}

/// For years: whatever the moment, contains() stays the same until nextChange(), and differs there.
TEST(WeeklyTimesTest, ChangesExactlyWhenItSays)
{
    const WeeklyTimes times = timesOf(R"([{"days": ["Sat", "Sun"], "from": "01:30", "to": "02:15"},
        {"days": ["Mon", "Wed"], "from": "22:00", "to": "03:00"}])");
    qint64 moment = at("2026-01-01T00:00:00Z");
    const qint64 end = at("2036-01-01T00:00:00Z");
    int changes = 0;
    while (moment < end) {
        const auto next = times.nextChange(moment);
        ASSERT_TRUE(next);
        ASSERT_GT(*next, moment);
        EXPECT_EQ(times.contains(*next - 1), times.contains(moment)) << moment;
        EXPECT_NE(times.contains(*next), times.contains(moment)) << moment;
        moment = *next;
        ++changes;
    }
    // Two for each of 4 days in 522 weeks, apart from a night on which a span may be skipped.
    EXPECT_NEAR(changes, 4 * 2 * 522, 12);
}

TEST(WeeklyTimesTest, NamesWhatIsWrong)
{
    const auto errorOf = [](const char *list) {
        try {
            timesOf(list);
        } catch (const std::runtime_error &error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_THAT(errorOf(R"([{"from": "25:00", "to": "07:00"}])"),
                testing::HasSubstr("times[0].from"));
    EXPECT_THAT(errorOf(R"([{"from": "22:00"}])"), testing::HasSubstr("times[0].to"));
    EXPECT_THAT(errorOf(R"([{"days": ["Someday"], "from": "22:00", "to": "07:00"}])"),
                testing::HasSubstr("times[0].days: must be a list of days"));
    EXPECT_THAT(errorOf(R"([{"from": "24:00", "to": "07:00"}])"),
                testing::HasSubstr("times[0].from"));
}
} // namespace
