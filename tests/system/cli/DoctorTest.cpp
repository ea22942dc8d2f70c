// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

using testing::HasSubstr;

class CliDoctorTest : public CliTest
{
protected:
    /// The findings about a subject, as "state: text".
    std::vector<std::string> findings(const char *subject)
    {
        std::vector<std::string> result;
        for (const QJsonValue &each : json().toArray()) {
            const QJsonObject finding = each.toObject();
            if (finding.value("subject") == subject) {
                result.push_back(
                    (finding.value("state").toString() + ": " + finding.value("finding").toString())
                        .toStdString());
            }
            const bool isGood = finding.value("state") == "good";
            EXPECT_EQ(finding.value("remedy").toString().isEmpty(), isGood)
                << finding.value("finding").toString().toStdString();
        }
        return result;
    }
};

TEST_F(CliDoctorTest, FindsEverythingInOrder)
{
    startHost();
    EXPECT_EQ(run({"doctor", "--json"}), s_good);
    EXPECT_THAT(findings("modules"), testing::ElementsAre(testing::MatchesRegex(
                                         "good: installed: .*dbus.*notifications.*player.*")));
    EXPECT_THAT(findings("host"),
                testing::ElementsAre("good: version " TAVO_VERSION, "good: runs powermanager",
                                     "good: runs player", "good: runs notifications"));
    EXPECT_THAT(findings("attention"),
                testing::ElementsAre(HasSubstr("notice: the host does not run attention")));
    EXPECT_THAT(findings("messages"),
                testing::ElementsAre("good: notifications of desktop programs are accepted"));
    EXPECT_THAT(findings("notifications' device"),
                testing::ElementsAre("good: null can be opened"));
}

TEST_F(CliDoctorTest, ReportsAModuleOfAnotherVersion)
{
    startHost();
    m_tavo.setEnvironment("TAVO_MODULE_PATH", TAVO_TEST_MODULES);
    EXPECT_EQ(run({"doctor"}), s_refused);
    EXPECT_THAT(m_tavo.output(), HasSubstr("missing  modules: unresolved: "));
    EXPECT_THAT(m_tavo.output(), HasSubstr("         install the version of it for this version of "
                                           "Tavo\n"));
}

TEST_F(CliDoctorTest, ReportsThatNothingIsOnTheScreen)
{
    startHost();
    m_tavo.setEnvironment("QT_QPA_PLATFORM", "xcb");
    m_tavo.setEnvironment("DISPLAY", ":65000");
    EXPECT_EQ(run({"doctor", "--json"}), s_good);
    EXPECT_THAT(findings("screen"), testing::ElementsAre(testing::AnyOf(
                                        HasSubstr("notice: tavo-display: there is no display"),
                                        "notice: tavo-display is not installed here")));
}

TEST_F(CliDoctorTest, ReportsAMissingBus)
{
    m_bus.stop();
    EXPECT_EQ(run({"doctor", "--json"}), s_refused);
    EXPECT_THAT(findings("bus"), testing::ElementsAre(HasSubstr("missing: ")));
    EXPECT_THAT(findings("host"), testing::IsEmpty());
}

TEST_F(CliDoctorTest, ReportsABusThatDoesNotAnswer)
{
    m_bus.pause();
    EXPECT_EQ(run({"--reply-timeout", "0.2", "doctor", "--json"}), s_refused);
    EXPECT_THAT(findings("bus"), testing::ElementsAre(testing::AllOf(
                                     HasSubstr("missing: "), HasSubstr("does not answer"))));
    EXPECT_THAT(findings("host"), testing::IsEmpty());
}

TEST_F(CliDoctorTest, ReportsAMissingHost)
{
    EXPECT_EQ(run({"doctor", "--json"}), s_refused);
    EXPECT_THAT(findings("bus"), testing::ElementsAre(HasSubstr("good: ")));
    EXPECT_THAT(findings("host"), testing::ElementsAre(HasSubstr("missing: No host")));
}

TEST_F(CliDoctorTest, SaysHowToStartTheBusOfADevice)
{
    m_tavo.setEnvironment("TAVO_BUS", "system");
    m_tavo.setEnvironment("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
    EXPECT_EQ(run({"doctor"}), s_refused);
    EXPECT_THAT(m_tavo.output(), HasSubstr("\n         start dbus: systemctl start dbus\n"));
}

TEST_F(CliDoctorTest, SaysHowToStartTheHostOfADevice)
{
    m_tavo.setEnvironment("TAVO_BUS", "system");
    m_tavo.setEnvironment("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address());
    EXPECT_EQ(run({"doctor"}), s_refused);
    EXPECT_THAT(m_tavo.output(), HasSubstr("\n         systemctl enable --now tavo-host; or "));
}

TEST_F(CliDoctorTest, ReportsMissingModulesAndWhatToDo)
{
    m_host = std::make_unique<HostProcess>();
    const QJsonObject config{{"bus", m_bus.address()}};
    m_host->setConfiguration(
        {{"modules",
          QJsonArray{"powermanager", QJsonObject{{"name", "dbus"}, {"config", config}}}}});
    ASSERT_TRUE(m_host->startReady());
    ASSERT_TRUE(m_host->waitForLog("Serving org.tavo.Model1"));
    EXPECT_EQ(run({"doctor"}), s_refused);
    EXPECT_THAT(m_tavo.output(), HasSubstr("good     host: runs powermanager\n"
                                           "missing  host: does not run player\n"
                                           "         list it in the host's configuration"));
}

TEST_F(CliDoctorTest, ReportsADeviceThatCannotBeOpened)
{
    m_host = std::make_unique<HostProcess>();
    const QJsonObject devices{{"mainDevice", "null"}, {"notificationsDevice", "no_such_device"}};
    const QJsonObject config{{"bus", m_bus.address()}};
    m_host->setConfiguration(
        {{"modules",
          QJsonArray{"powermanager", QJsonObject{{"name", "player"}, {"config", devices}},
                     "notifications", QJsonObject{{"name", "dbus"}, {"config", config}}}}});
    ASSERT_TRUE(m_host->startReady());
    ASSERT_TRUE(m_host->waitForLog("Serving org.tavo.Model1"));
    EXPECT_EQ(run({"doctor", "--json"}), s_refused);
    EXPECT_THAT(findings("notifications' device"),
                testing::ElementsAre(HasSubstr("missing: no_such_device can't be opened")));
    EXPECT_THAT(findings("main audio's device"), testing::ElementsAre(HasSubstr("good: ")));
}
