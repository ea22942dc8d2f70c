// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionTest.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class CliNotifyTest : public CliAttentionTest
{
protected:
    /// The path of the first message on the display.
    QString shownPath()
    {
        EXPECT_EQ(m_other.run({"rows", "/notifications/display/queue"}), s_good);
        const auto lines = m_other.lines();
        return lines.empty() ? QString() : QString::fromStdString(lines.front());
    }

    /// Shows a notification that stays until it is closed.
    void startWaiting(const QStringList &more = {})
    {
        m_tavo.start(QStringList{"notify", "--wait", "--timeout", "0", "--id", "bell", "Door",
                                 "Somebody rings"} +
                     more);
        ASSERT_TRUE(m_tavo.waitForOutput("bell"));
    }
};

TEST_F(CliNotifyTest, ShowsAMessage)
{
    EXPECT_EQ(run({"notify", "Door", "Somebody rings"}), s_good);
    EXPECT_THAT(m_tavo.output(), StartsWith("tavo-"));
    EXPECT_EQ(m_tavo.error(), "");
    EXPECT_EQ(m_other.run({"list"}), s_good);
    EXPECT_THAT(m_other.output(), HasSubstr("\tDoor\tSomebody rings"));
}

TEST_F(CliNotifyTest, WithWaitWaitsForMessageAndSound)
{
    EXPECT_EQ(run({"notify", "--wait", "--id", "bell", "--timeout", "50", "--sound", soundFile(),
                   "Door"}),
              s_good);
    EXPECT_EQ(m_tavo.output(), "bell\nexpired\n");
    EXPECT_TRUE(m_host->waitForLog("Starting playback"));
}

TEST_F(CliNotifyTest, WithWaitPrintsTheActionThatAPersonChose)
{
    startWaiting({"--action", "open=Open the door", "--action", "ignore=Ignore = do nothing"});
    const QString message = shownPath();
    EXPECT_EQ(m_other.run({"rows", message, "--json"}), s_good);
    EXPECT_THAT(m_other.output(), HasSubstr("Ignore = do nothing"));
    const QJsonArray rows =
        QJsonDocument::fromJson(QByteArray::fromStdString(m_other.output())).array();
    ASSERT_EQ(rows.size(), 3);
    const QString action = rows.at(2).toObject().value("path").toString();
    EXPECT_EQ(m_other.run({"call", action}), s_good) << m_other.error();
    EXPECT_EQ(m_tavo.waitForExit(), s_good);
    EXPECT_EQ(m_tavo.output(), "bell\naction ignore\n");
}

TEST_F(CliNotifyTest, WithWaitReportsThatAPersonDismissedIt)
{
    startWaiting();
    Program person("busctl");
    EXPECT_EQ(person.run({"--address=" + m_bus.address(), "call", "org.tavo.Model1",
                          "/org/tavo/Model1", "org.tavo.Model1", "Close", "s", shownPath()}),
              0)
        << person.error();
    EXPECT_EQ(m_tavo.waitForExit(), s_dismissed);
    EXPECT_EQ(m_tavo.output(), "bell\ndismissed\n");
}

TEST_F(CliNotifyTest, WithWaitReportsThatItWasKeptFromPeople)
{
    setDoNotDisturb("on");
    EXPECT_EQ(run({"notify", "--wait", "--id", "bell", "Door"}), 14);
    EXPECT_EQ(m_tavo.output(), "bell\nsilenced\n");
    EXPECT_EQ(m_tavo.error(), "Not shown: do-not-disturb is on\n");
}

TEST_F(CliNotifyTest, WithWaitAnInterruptClosesIt)
{
    startWaiting();
    m_tavo.sendSignal(SIGINT);
    EXPECT_EQ(m_tavo.waitForExit(), s_interrupted);
    EXPECT_EQ(m_tavo.output(), "bell\nclosed\n");
    EXPECT_EQ(shownPath(), QString());
}

TEST_F(CliNotifyTest, WithWaitReportsThatTheHostHasGone)
{
    startWaiting();
    m_host->sendSignal(SIGKILL);
    EXPECT_EQ(m_tavo.waitForExit(), s_endUnknown);
    EXPECT_THAT(m_tavo.error(), HasSubstr("the host went away"));
}

TEST_F(CliNotifyTest, PrintsEventsAsJson)
{
    EXPECT_EQ(run({"notify", "--json", "--wait", "--id", "bell", "--timeout", "50", "Door"}),
              s_good);
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(object(lines[0]).value("event"), "opened");
    EXPECT_EQ(object(lines[0]).value("shown"), true);
    EXPECT_EQ(lines[1], R"({"event":"expired","id":"bell"})");
}

TEST_F(CliNotifyTest, SaysSomething)
{
    EXPECT_EQ(run({"say", "--wait", "--id", "words", "Dinner is ready"}), s_good);
    EXPECT_EQ(m_tavo.output(), "words\nexpired\n");
    EXPECT_EQ(run({"history"}), s_good);
    EXPECT_THAT(m_tavo.output(), HasSubstr("\tDinner is ready\n"));
}

TEST_F(CliNotifyTest, SaysThatATextIsNotReadAloudHoweverOftenItComes)
{
    setDoNotDisturb("on");
    for (const char *text : {"Dinner is ready", "Dinner is ready"}) {
        EXPECT_EQ(run({"say", text}), s_good);
        EXPECT_EQ(m_tavo.error(), "Not read aloud: do-not-disturb is on\n");
    }
    EXPECT_EQ(run({"say", "--priority", "urgent", "Leave the house"}), s_good);
    EXPECT_EQ(m_tavo.error(), "Read aloud: do-not-disturb is on, but its priority passes\n");
}

TEST_F(CliNotifyTest, RefusesAnIdThatIsOpen)
{
    startWaiting();
    EXPECT_EQ(m_other.run({"notify", "--id", "bell", "Door"}), s_refused);
    EXPECT_THAT(m_other.error(), HasSubstr("A notification with this id is open"));
}
