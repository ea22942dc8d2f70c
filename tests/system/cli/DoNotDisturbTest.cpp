// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionTest.h"
#include "support/bus/BusClient.h"

using testing::HasSubstr;
using testing::MatchesRegex;

class CliDoNotDisturbTest : public CliAttentionTest
{
};

TEST_F(CliDoNotDisturbTest, IsSetAndShown)
{
    EXPECT_EQ(run({"dnd"}), s_good);
    EXPECT_EQ(m_tavo.output(), "off\n");
    EXPECT_EQ(run({"dnd", "on"}), s_good);
    EXPECT_EQ(m_tavo.output(), "on (chosen)\n");
    EXPECT_EQ(run({"dnd", "--json"}), s_good);
    EXPECT_EQ(json().toObject().value("on"), true);
    EXPECT_EQ(run({"dnd", "off"}), s_good);
    EXPECT_EQ(m_tavo.output(), "off\n");
}

TEST_F(CliDoNotDisturbTest, IsOnUntilATime)
{
    EXPECT_EQ(run({"dnd", "until", "2h"}), s_good);
    EXPECT_THAT(m_tavo.output(), MatchesRegex("on until [-0-9 ]*[0-9:]{5} \\(chosen\\)\n"));
    EXPECT_EQ(run({"dnd", "--json"}), s_good);
    const qint64 until = qint64(json().toObject().value("until").toDouble());
    constexpr qint64 twoHours = 7'200'000;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    EXPECT_LE(until, now + twoHours);
    EXPECT_GT(until, now + twoHours - 60'000);
}

TEST_F(CliDoNotDisturbTest, RefusesWhatIsNoTime)
{
    EXPECT_EQ(run({"dnd", "until", "25:00"}), s_usage);
    EXPECT_EQ(m_tavo.error(), "tavo: \"25:00\" is not a time: use one such as 07:00, "
                              "\"2026-12-24 18:00\", 2026-12-24T18:00:00Z, 2h or 30m\n");
    EXPECT_EQ(run({"dnd", "until"}), s_usage);
    EXPECT_EQ(m_tavo.error(), "tavo: until needs a time, such as 07:00 or 2h\n");
    EXPECT_EQ(run({"dnd", "on", "2h"}), s_usage);
    EXPECT_EQ(m_tavo.error(), "tavo: only until takes a time\n");
    EXPECT_EQ(run({"dnd", "perhaps"}), s_usage);
    EXPECT_THAT(m_tavo.error(), HasSubstr("must be on, off or until"));
}

TEST_F(CliDoNotDisturbTest, SaysWhichProgramKeepsItOn)
{
    BusClient presenter(m_bus.address());
    presenter.setTarget("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                        "org.freedesktop.Notifications");
    const BusCall inhibition = presenter.call("Inhibit", [](BusWriter &writer) {
        writer.writeString("presenter");
        writer.writeString("Slides \u001b[2J");
        writer.openArray("{sv}");
        writer.close();
    });
    ASSERT_TRUE(inhibition.succeeds()) << inhibition.errorMessage();
    EXPECT_EQ(run({"dnd"}), s_good);
    EXPECT_EQ(m_tavo.output(), "on (for presenter: Slides [2J)\n");
    EXPECT_EQ(run({"dnd", "off"}), s_good);
    EXPECT_EQ(m_tavo.output(), "off\n");
}

class CliScheduleTest : public CliAttentionTest
{
protected:
    CliScheduleTest()
        : CliAttentionTest(R"({"doNotDisturb": {"times": [{"from": "00:00", "to": "24:00"}]}})")
    {
    }
};

TEST_F(CliScheduleTest, SaysThatTheScheduleHasSetIt)
{
    EXPECT_EQ(run({"dnd"}), s_good);
    EXPECT_EQ(m_tavo.output(), "on (by the schedule)\n");
}
