// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

using testing::HasSubstr;
using testing::Not;

class CliCancelTest : public CliTest
{
protected:
    void SetUp() override { startHost(); }

    /// Opens a message through the model and returns its path.
    QString openMessage()
    {
        EXPECT_EQ(run({"--json", "call", "/notifications/display/open",
                       R"({"notificationDisplayItem": {"message": "Hello", "title": "Door"}})"}),
                  s_good);
        return json().toObject().value("path").toString();
    }
};

TEST_F(CliCancelTest, ClosesAMessageByItsPath)
{
    const QString path = openMessage();
    EXPECT_EQ(run({"cancel", path}), s_good);
    EXPECT_EQ(m_tavo.output(), "");
    EXPECT_EQ(run({"rows", "/notifications/display/queue"}), s_good);
    EXPECT_EQ(m_tavo.output(), "");
}

TEST_F(CliCancelTest, ClosesAMessageByItsNumberWithoutCancellingASound)
{
    ASSERT_EQ(run({"show", "--timeout", "0", "Door"}), s_good);
    EXPECT_EQ(run({"cancel", "1"}), s_good);
    EXPECT_EQ(run({"list", "--json"}), s_good);
    EXPECT_EQ(json().toObject().value("messages"), QJsonArray());
    EXPECT_EQ(run({"cancel", "none"}), s_refused);
    ASSERT_TRUE(m_host->waitForLog("Unable to cancel not existing item: none"));
    EXPECT_THAT(m_host->log().toStdString(), Not(HasSubstr("not existing item: 1")));
}

TEST_F(CliCancelTest, PrefersTheMessageIfASoundHasTheSameNumber)
{
    m_other.start({"sound", "--loop", "--id", "1", soundFile()});
    ASSERT_TRUE(m_other.waitForOutput("1\n"));
    ASSERT_EQ(run({"show", "--timeout", "0", "Door"}), s_good);
    ASSERT_EQ(m_tavo.output(), "1\n");
    EXPECT_EQ(run({"cancel", "--json", "1"}), s_good);
    EXPECT_EQ(json().toObject().value("cancelled"), "message");
    EXPECT_EQ(run({"cancel", "--json", "1"}), s_good);
    EXPECT_EQ(json().toObject().value("cancelled"), "sound");
    EXPECT_EQ(m_other.waitForExit(), s_cancelled);
}

TEST_F(CliCancelTest, ReportsThatThereIsNoSuchSound)
{
    EXPECT_EQ(run({"cancel", "bell"}), s_refused);
    EXPECT_EQ(m_tavo.error(),
              "tavo: no sound that plays or waits has the id bell. To close a message, use its "
              "number or path, which tavo list shows\n");
}

TEST_F(CliCancelTest, ReportsANumberThatIsNeither)
{
    EXPECT_EQ(run({"cancel", "4711"}), s_refused);
    EXPECT_EQ(m_tavo.error(), "tavo: there is neither a message nor a sound 4711\n");
}

TEST_F(CliCancelTest, RefusesAnEmptyName)
{
    EXPECT_EQ(run({"cancel", ""}), s_usage);
    EXPECT_EQ(m_tavo.error(), "tavo: ID|PATH: must not be empty. See tavo cancel --help.\n");
    EXPECT_EQ(run({"cancel"}), s_usage);
    EXPECT_EQ(m_tavo.error(), "tavo: ID|PATH is required. See tavo cancel --help.\n");
}

TEST_F(CliCancelTest, ReportsThatThereIsNoSuchMessageWithoutAWarningInTheHost)
{
    EXPECT_EQ(run({"cancel", "/dbus/notifications/5"}), s_refused);
    EXPECT_EQ(m_tavo.error(), "tavo: no message is open at /dbus/notifications/5. tavo list shows "
                              "the open ones\n");
    EXPECT_EQ(run({"cancel", "none"}), s_refused);
    ASSERT_TRUE(m_host->waitForLog("Unable to cancel not existing item: none"));
    EXPECT_THAT(m_host->log().toStdString(), Not(HasSubstr("Called cancel display notification")));
}

TEST_F(CliCancelTest, PrintsAsJsonWhatItCancelled)
{
    const QString path = openMessage();
    EXPECT_EQ(run({"cancel", "--json", path}), s_good);
    EXPECT_EQ(json().toObject(), (QJsonObject{{"cancelled", "message"}, {"id", path}}));
}
