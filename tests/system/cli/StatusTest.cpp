// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

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
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "Sound       a notification sounds");
    EXPECT_EQ(lines[1], "Main audio  silent, volume 100 %, ducked for notifications");
    EXPECT_THAT(lines[2], MatchesRegex("Display     shows Door: one \\(/.*\\), 1 waiting"));
    EXPECT_EQ(lines[3], "Power       on, Audio held by notifications");

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
