// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "unit/attention/decisions/AttentionTest.h"

#include <gtest/gtest.h>

namespace {
using Priority = TavoNotificationItemPriority;

class DoNotDisturbTest : public testing::Test
{
protected:
    DoNotDisturb m_quiet{settingsOf(R"({"timeZone": "UTC", "doNotDisturb": {
        "times": [{"from": "22:00", "to": "07:00"}],
        "passSources": ["doorbell"], "passRepeatedWithin": 180}})")
                             .doNotDisturb};
    const qint64 m_noon = at("2026-11-22T12:00:00Z");
    const qint64 m_evening = at("2026-11-22T22:00:00Z");
    const qint64 m_night = at("2026-11-22T23:00:00Z");
    const qint64 m_morning = at("2026-11-23T07:00:00Z");

    /// A call from the number, the seconds after the night's begin.
    AttentionInput call(const char *number, int seconds) const
    {
        AttentionInput input = notificationOf("phone", number);
        input.time = m_night + seconds * 1000;
        return input;
    }
};

TEST_F(DoNotDisturbTest, FollowsItsSchedule)
{
    EXPECT_FALSE(m_quiet.isOn(m_noon));
    EXPECT_EQ(m_quiet.nextChange(m_noon), m_evening);
    EXPECT_TRUE(m_quiet.isOn(m_night));
    EXPECT_EQ(m_quiet.nextChange(m_night), m_morning);
}

TEST_F(DoNotDisturbTest, StaysOnUntilItIsSwitchedOff)
{
    m_quiet.choose({true, 0}, m_noon);
    EXPECT_TRUE(m_quiet.isOn(m_morning + 1));
    EXPECT_EQ(m_quiet.nextChange(m_noon), std::nullopt);
    m_quiet.choose({false, 0}, m_morning + 1);
    EXPECT_FALSE(m_quiet.isOn(m_morning + 1));
    EXPECT_TRUE(m_quiet.isOn(m_morning + 16 * 3600 * 1000)); // the schedule is back
}

TEST_F(DoNotDisturbTest, IsOnUntilTheChosenTime)
{
    m_quiet.choose({true, m_noon + 1000}, m_noon);
    EXPECT_TRUE(m_quiet.isOn(m_noon + 999));
    EXPECT_EQ(m_quiet.nextChange(m_noon), m_noon + 1000);
    EXPECT_FALSE(m_quiet.isOn(m_noon + 1000));
}

TEST_F(DoNotDisturbTest, StaysOffForTheRestOfTheNight)
{
    m_quiet.choose({false, 0}, m_night);
    EXPECT_FALSE(m_quiet.isOn(m_morning - 1));
    EXPECT_TRUE(m_quiet.isOn(m_morning + 15 * 3600 * 1000)); // the next evening
}

TEST_F(DoNotDisturbTest, LetsUrgentOnesAndNamedSourcesPass)
{
    AttentionInput input = notificationOf("mail");
    EXPECT_EQ(m_quiet.passes(input), "");
    input.priority = Priority::Urgent;
    EXPECT_EQ(m_quiet.passes(input), "its priority passes");
    EXPECT_EQ(m_quiet.passes(notificationOf("Doorbell")), "its source passes");
}

TEST_F(DoNotDisturbTest, LetsTheSecondCallOfANumberPass)
{
    EXPECT_EQ(m_quiet.passes(call("+49 30 1", 0)), "");
    m_quiet.remember(call("+49 30 1", 0));
    EXPECT_EQ(m_quiet.passes(call("+49 30 1", 180)), "it came a second time");
    EXPECT_EQ(m_quiet.passes(call("+49 30 2", 60)), "") << "another number";
    EXPECT_EQ(m_quiet.passes(call("+49 30 1", 181)), "") << "too late";
}

TEST_F(DoNotDisturbTest, TakesNothingWithoutATitleForASecondOne)
{
    m_quiet.remember(call("", 0));
    EXPECT_EQ(m_quiet.passes(call("", 60)), "");
}

TEST_F(DoNotDisturbTest, DoesNotTakeACallForASecondOneWhenTheClockGoesBack)
{
    m_quiet.remember(call("+49 30 1", 60));
    EXPECT_EQ(m_quiet.passes(call("+49 30 1", 0)), "");
}

TEST_F(DoNotDisturbTest, RemembersACallAlsoIfAnotherSourceFloods)
{
    m_quiet.remember(call("+49 30 1", 0));
    for (int number = 0; number < 1000; ++number) {
        AttentionInput mail = notificationOf("mail");
        mail.title = QString::number(number);
        m_quiet.remember(mail);
    }
    EXPECT_EQ(m_quiet.passes(call("+49 30 1", 60)), "it came a second time");
}

TEST_F(DoNotDisturbTest, RemembersACallAlsoIfAnotherUsersProgramsAreMany)
{
    m_quiet.remember(call("+49 30 1", 0));
    for (int number = 0; number < 1000; ++number) {
        AttentionInput madeUp = notificationOf(QByteArray::number(number).constData());
        madeUp.user = "other";
        madeUp.time = m_night + 1;
        m_quiet.remember(madeUp);
    }
    EXPECT_EQ(m_quiet.passes(call("+49 30 1", 60)), "it came a second time");
}

TEST_F(DoNotDisturbTest, RemembersTheLatestOfMany)
{
    for (int number = 0; number < 1000; ++number) {
        m_quiet.remember(call(std::to_string(number).c_str(), number / 10));
    }
    EXPECT_EQ(m_quiet.passes(call("999", 100)), "it came a second time");
    EXPECT_EQ(m_quiet.passes(call("0", 100)), "") << "forgotten";
}
} // namespace
