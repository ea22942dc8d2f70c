// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

using testing::ElementsAre;
using testing::HasSubstr;

class CliShowTest : public CliTest
{
protected:
    void SetUp() override { startHost(); }

    /// The messages of the display, as tavo list prints them.
    QJsonArray messages()
    {
        EXPECT_EQ(m_other.run({"list", "--json"}), s_good);
        const QByteArray text = QByteArray::fromStdString(m_other.output());
        return QJsonDocument::fromJson(text).object().value("messages").toArray();
    }

    std::vector<std::string> titles()
    {
        std::vector<std::string> result;
        for (const QJsonValue &message : messages()) {
            result.push_back(message.toObject().value("title").toString().toStdString());
        }
        return result;
    }

    /// Shows a message that stays until it is closed.
    void startWaiting(const QStringList &more = {})
    {
        m_tavo.start(QStringList{"show", "--wait", "--timeout", "0", "Door", "Hello"} + more);
        ASSERT_TRUE(m_tavo.waitForOutput("1"));
    }
};

TEST_F(CliShowTest, PrintsTheNumberOnceTheMessageIsQueued)
{
    EXPECT_EQ(run({"show", "--timeout", "0", "Door", "Somebody <rings> & waits"}), s_good);
    EXPECT_EQ(m_tavo.output(), "1\n");
    const QJsonArray shown = messages();
    ASSERT_EQ(shown.size(), 1);
    EXPECT_EQ(shown[0].toObject().value("title"), "Door");
    EXPECT_EQ(shown[0].toObject().value("text"), "Somebody <rings> & waits");
}

TEST_F(CliShowTest, ShowsATitleWithoutAMessage)
{
    EXPECT_EQ(run({"show", "--timeout", "0", "The door is open"}), s_good);
    EXPECT_THAT(titles(), ElementsAre("The door is open"));
}

TEST_F(CliShowTest, ShowsUrgentMessagesFirst)
{
    for (const char *priority : {"normal", "low", "urgent", "high"}) {
        EXPECT_EQ(run({"show", "--timeout", "0", "--priority", priority, priority}), s_good);
    }
    EXPECT_THAT(titles(), ElementsAre("urgent", "high", "normal", "low"));
}

TEST_F(CliShowTest, TakesANumberAsPriority)
{
    for (const char *priority : {"2", "17"}) {
        EXPECT_EQ(run({"show", "--timeout", "0", "--priority", priority, priority}), s_good);
    }
    EXPECT_THAT(titles(), ElementsAre("17", "2"));
}

TEST_F(CliShowTest, WithWaitSucceedsWhenTheMessageExpires)
{
    EXPECT_EQ(run({"show", "--wait", "--timeout", "100", "Door"}), s_good);
    EXPECT_EQ(m_tavo.output(), "1\nexpired\n");
}

TEST_F(CliShowTest, WithWaitReportsThatAPersonDismissedTheMessage)
{
    startWaiting();
    const QString path = messages().at(0).toObject().value("path").toString();
    Program person("busctl");
    EXPECT_EQ(person.run({"--address=" + m_bus.address(), "call", "org.tavo.Model1",
                          "/org/tavo/Model1", "org.tavo.Model1", "Close", "s", path}),
              0)
        << person.error();
    EXPECT_EQ(m_tavo.waitForExit(), s_dismissed);
    EXPECT_EQ(m_tavo.output(), "1\ndismissed\n");
}

TEST_F(CliShowTest, WithWaitReportsThatTheMessageWasCancelled)
{
    startWaiting();
    EXPECT_EQ(m_other.run({"cancel", "1"}), s_good) << m_other.error();
    EXPECT_EQ(m_tavo.waitForExit(), s_cancelled);
    EXPECT_EQ(m_tavo.output(), "1\nclosed\n");
}

TEST_F(CliShowTest, WithWaitReportsThatTheMessageWasCancelledByItsPath)
{
    startWaiting();
    const QString path = messages().at(0).toObject().value("path").toString();
    EXPECT_EQ(m_other.run({"cancel", path}), s_good) << m_other.error();
    EXPECT_EQ(m_tavo.waitForExit(), s_cancelled);
}

TEST_F(CliShowTest, WithWaitReportsThatTheHostHasGone)
{
    startWaiting();
    m_host->sendSignal(SIGKILL);
    EXPECT_EQ(m_tavo.waitForExit(), s_endUnknown);
    EXPECT_THAT(m_tavo.error(), HasSubstr("the host went away"));
}

TEST_F(CliShowTest, WithWaitEndsWhenTheHostStops)
{
    startWaiting();
    Program notifySend("notify-send");
    notifySend.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    notifySend.start({"--wait", "--expire-time=0", "Title"});
    ASSERT_TRUE(waitFor([this] { return messages().size() == 2; }, std::chrono::seconds(20)));
    EXPECT_EQ(m_host->stop(), 0);
    EXPECT_EQ(notifySend.waitForExit(), 0) << notifySend.error();
    EXPECT_EQ(m_tavo.waitForExit(), s_endUnknown);
}

TEST_F(CliShowTest, WithWaitAnInterruptClosesTheMessage)
{
    startWaiting();
    m_tavo.sendSignal(SIGINT);
    EXPECT_EQ(m_tavo.waitForExit(), s_interrupted);
    EXPECT_THAT(titles(), testing::IsEmpty());
}

TEST_F(CliShowTest, PrintsEventsAsJson)
{
    EXPECT_EQ(run({"show", "--wait", "--json", "--timeout", "100", "Door"}), s_good);
    EXPECT_THAT(m_tavo.lines(),
                ElementsAre(R"({"event":"queued","id":1})", R"({"event":"expired","id":1})"));
}

TEST_F(CliTest, ShowReportsThatTheHostShowsNoMessagesOfPrograms)
{
    m_host = std::make_unique<HostProcess>();
    const QJsonObject config{{"bus", m_bus.address()}, {"notifications", false}};
    m_host->setConfiguration(
        {{"modules", QJsonArray{QJsonObject{{"name", "dbus"}, {"config", config}}}}});
    ASSERT_TRUE(m_host->startReady());
    ASSERT_TRUE(m_host->waitForLog("Serving org.tavo.Model1"));
    EXPECT_EQ(run({"show", "Hello"}), s_refused);
    EXPECT_THAT(m_tavo.error(), HasSubstr("\"notifications\": true"));
}
