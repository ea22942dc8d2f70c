// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

using testing::HasSubstr;

class CliWatchTest : public CliTest
{
protected:
    void SetUp() override { startHost(); }

    /// Runs another command meanwhile.
    void act(const QStringList &arguments)
    {
        EXPECT_EQ(m_other.run(arguments), s_good) << m_other.error();
    }

    QJsonObject lastLine() const { return object(m_tavo.lines().back()); }
};

TEST_F(CliWatchTest, PrintsTheValueAndThenItsChanges)
{
    m_tavo.start({"watch", "--json", "/player/mainAudio/state"});
    ASSERT_TRUE(m_tavo.waitForOutput("\"volume\":1"));
    act({"call", "/player/mainAudio/volume", "0.5"});
    ASSERT_TRUE(m_tavo.waitForOutput("\"volume\":0.5"));
    EXPECT_EQ(lastLine().value("path"), "/player/mainAudio/state");
}

TEST_F(CliWatchTest, PrintsRowsThatComeAndGo)
{
    m_tavo.start({"watch", "--json", "/notifications/display/queue"});
    ASSERT_TRUE(m_tavo.waitForOutput("\"rows\":[]"));
    act({"call", "/notifications/display/open",
         R"({"notificationDisplayItem": {"id": "a", "message": "Hello"}})"});
    ASSERT_TRUE(m_tavo.waitForOutput("simpleMessageNode"));
    const QJsonArray rows = lastLine().value("rows").toArray();
    ASSERT_EQ(rows.size(), 1);
    act({"cancel", rows[0].toString()});
    EXPECT_TRUE(waitFor([&] {
        return m_tavo.lines().size() >= 3 && lastLine().value("rows").toArray().isEmpty();
    }));
}

TEST_F(CliWatchTest, WithoutAPathItFollowsTheServices)
{
    m_tavo.start({"watch"});
    ASSERT_TRUE(m_tavo.waitForOutput("/powerManager/state"));
    act({"sound", "--wait", soundFile()});
    EXPECT_TRUE(m_tavo.waitForOutput("/notifications/player/isPlaying {\"bool\":true}"));
    EXPECT_TRUE(m_tavo.waitForOutput("\"ducked\":true"));
}

TEST_F(CliWatchTest, ExitsWith0OnAnInterrupt)
{
    m_tavo.start({"watch"});
    ASSERT_TRUE(m_tavo.waitForOutput("isPlaying"));
    m_tavo.sendSignal(SIGINT);
    EXPECT_EQ(m_tavo.waitForExit(), s_good);
    EXPECT_EQ(m_tavo.error(), "");
}

TEST_F(CliWatchTest, WaitsForAHostThatHasGoneAndReportsItsReturn)
{
    m_tavo.start({"watch", "--json", "/player/mainAudio/state"});
    ASSERT_TRUE(m_tavo.waitForOutput("\"volume\":1"));
    EXPECT_EQ(m_host->stop(), 0);
    ASSERT_TRUE(m_tavo.waitForOutput("{\"host\":false}"));
    const std::size_t before = m_tavo.lines().size();
    startHost();
    EXPECT_TRUE(waitFor([&] { return m_tavo.lines().size() > before; }));
    EXPECT_EQ(lastLine().value("path"), "/player/mainAudio/state");
    act({"call", "/player/mainAudio/volume", "0.5"});
    EXPECT_TRUE(m_tavo.waitForOutput("\"volume\":0.5"));
}

TEST_F(CliWatchTest, SaysThatThereIsNoNodeYet)
{
    m_tavo.start({"watch", "--json", "/dbus/notifications/1"});
    ASSERT_TRUE(m_tavo.waitForOutput(R"({"path":"/dbus/notifications/1","published":false})"));
    act({"show", "--timeout", "0", "Door", "Ring"});
    ASSERT_TRUE(m_tavo.waitForOutput(R"({"path":"/dbus/notifications/1","published":true})"));
    EXPECT_TRUE(m_tavo.waitForOutput("Ring"));
    act({"cancel", "1"});
    EXPECT_TRUE(waitFor([&] { return lastLine().value("published") == false; }));
    m_tavo.sendSignal(SIGINT);
    EXPECT_EQ(m_tavo.waitForExit(), s_good);
}

TEST_F(CliWatchTest, RefusesANodeThatOnlyTakesRequests)
{
    EXPECT_EQ(run({"watch", "/notifications/player/enqueue"}), s_refused);
    EXPECT_EQ(m_tavo.error(),
              "tavo: /notifications/player/enqueue takes requests and has neither a value "
              "nor rows\n");
}
