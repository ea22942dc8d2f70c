// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionTest.h"

using testing::HasSubstr;
using testing::MatchesRegex;

using CliStatusTest = CliTest;

TEST_F(CliStatusTest, ReportsAnIdleHost)
{
    startHost();
    EXPECT_EQ(run({"status"}), s_good);
    EXPECT_EQ(m_tavo.output(), "Sound       no notification sounds\n"
                               "Main audio  silent, volume 100 %, not ducked\n"
                               "Display     empty\n"
                               "Attention   unknown: the host has no module attention\n"
                               "Power       on, no resource held\n");
}

TEST_F(CliStatusTest, ReportsWhatPlaysWhatIsShownAndWhichResourcesAreHeld)
{
    startHost();
    m_other.start({"sound", "--loop", soundFile()});
    ASSERT_TRUE(m_host->waitForLog("Starting playback"));
    for (const char *text : {"one", "two"}) {
        run({"call", "/notifications/display/open",
             QString(R"({"notificationDisplayItem": {"title": "Door", "message": "%1"}})")
                 .arg(text)});
    }
    EXPECT_EQ(run({"status"}), s_good);
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0], "Sound       a notification sounds");
    EXPECT_EQ(lines[1], "Main audio  silent, volume 100 %, ducked for notifications");
    EXPECT_THAT(lines[2], MatchesRegex("Display     shows Door: one \\(/.*\\), 1 waiting"));
    EXPECT_EQ(lines[4], "Power       on, Audio held by notifications");

    EXPECT_EQ(run({"status", "--json"}), s_good);
    const QJsonObject status = json().toObject();
    EXPECT_EQ(status.value("sounding"), true);
    EXPECT_EQ(status.value("audio").toObject().value("ducked"), true);
    const QJsonObject display = status.value("display").toObject();
    EXPECT_EQ(display.value("shown").toObject().value("text"), "one");
    EXPECT_EQ(display.value("waiting").toArray().size(), 1);
    EXPECT_EQ(status.value("power").toObject().value("resources").toObject(),
              (QJsonObject{{"Audio", QJsonArray{"notifications"}}}));
}

TEST_F(CliStatusTest, ReportsWhichModulesAreMissing)
{
    m_host = std::make_unique<HostProcess>();
    const QJsonObject config{{"bus", m_bus.address()}};
    m_host->setConfiguration(
        {{"modules", QJsonArray{QJsonObject{{"name", "dbus"}, {"config", config}}}}});
    ASSERT_TRUE(m_host->startReady());
    ASSERT_TRUE(m_host->waitForLog("Serving org.tavo.Model1"));
    EXPECT_EQ(run({"status"}), s_good);
    EXPECT_THAT(m_tavo.output(), HasSubstr("unknown: the host has no module player"));
    EXPECT_EQ(run({"status", "--json"}), s_good);
    EXPECT_TRUE(json().toObject().value("audio").isNull());
    EXPECT_EQ(run({"list"}), s_refused);
}

class CliAttentionStatusTest : public CliAttentionTest
{
protected:
    std::string attentionLine()
    {
        EXPECT_EQ(run({"status"}), s_good);
        const auto lines = m_tavo.lines();
        return lines.size() > 3 ? lines[3] : std::string();
    }
};

TEST_F(CliAttentionStatusTest, TellsWhetherPeopleAreDisturbedAndWhatTheyMissed)
{
    EXPECT_EQ(attentionLine(), "Attention   do-not-disturb off, missed: 0, rules: 0");
    setDoNotDisturb("on");
    notify({"Mail"});
    // It counts when the history has been written.
    EXPECT_TRUE(waitFor([this] {
        return attentionLine() == "Attention   do-not-disturb on (chosen), missed: 1, rules: 0";
    }));
    EXPECT_EQ(run({"status", "--json"}), s_good);
    const QJsonObject attention = json().toObject().value("attention").toObject();
    EXPECT_EQ(attention.value("doNotDisturb").toObject().value("on"), true);
    EXPECT_EQ(attention.value("history").toObject().value("kept"), true);
    EXPECT_EQ(attention.value("rules").toObject().value("file"), m_file);
    EXPECT_EQ(attention.value("missed"), 1);
}

TEST_F(CliAttentionStatusTest, AndTheDoctorHowItIsSet)
{
    EXPECT_EQ(run({"doctor"}), s_good);
    EXPECT_THAT(m_tavo.output(), HasSubstr("good     attention: do-not-disturb is off\n"));
    EXPECT_THAT(m_tavo.output(),
                HasSubstr("good     settings: " + m_file.toStdString() + ", rules: 0\n"));
    EXPECT_THAT(m_tavo.output(), HasSubstr("h.db, missed: 0\n"));
}

class CliIncompleteSettingsTest : public CliAttentionTest
{
protected:
    CliIncompleteSettingsTest()
        : CliAttentionTest(R"({"speech": {"command": ["no-such-speaker"]}})")
    {
    }
};

TEST_F(CliIncompleteSettingsTest, AreReportedByTheDoctorAndByATrial)
{
    EXPECT_EQ(run({"doctor"}), s_refused);
    EXPECT_THAT(m_tavo.output(),
                HasSubstr("missing  settings: " + m_file.toStdString() +
                          ":1: speech.command: there is no program no-such-speaker\n"));
    EXPECT_EQ(run({"rules", "test", "Water", "--speech", "Water"}), s_good);
    EXPECT_THAT(m_tavo.output(), HasSubstr("Speech\tnot read aloud\nPriority\tNormal\n"
                                           "Why\tthere is no program no-such-speaker\n"));
}

class CliBadSettingsTest : public CliAttentionTest
{
protected:
    CliBadSettingsTest()
        : CliAttentionTest("{\n\"rule\": []}")
    {
        QDir(m_folder.path()).mkdir("h.db"); // a folder can't be the file of a history
    }
};

TEST_F(CliBadSettingsTest, AreReportedAndSoIsAHistoryThatCanNotBeKept)
{
    ASSERT_TRUE(m_host->waitForLog("notifications are kept in memory"));
    EXPECT_EQ(run({"doctor"}), s_refused);
    EXPECT_THAT(m_tavo.output(), HasSubstr("missing  settings: " + m_file.toStdString() +
                                           ":2: rule: unknown key\n         correct them; there "
                                           "are no rules and no schedule until then\n"));
    EXPECT_THAT(m_tavo.output(),
                HasSubstr("missing  history: " + m_folder.filePath("h.db").toStdString() +
                          " cannot be used"));
    EXPECT_EQ(run({"status"}), s_good);
    EXPECT_THAT(m_tavo.output(), HasSubstr("no settings, wrong settings: "));
    EXPECT_THAT(m_tavo.output(), HasSubstr(", history: "));
}
