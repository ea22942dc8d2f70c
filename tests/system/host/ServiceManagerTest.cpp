// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// What the host reports to the service manager that has started it.

#include "system/host/DatagramSocket.h"
#include "system/host/HostTest.h"

#include <csignal>

namespace {
class ServiceManagerTest : public HostTest
{
protected:
    ServiceManagerTest() { m_host.setEnvironment("NOTIFY_SOCKET", m_socket.path()); }

    /// The next report of the host; empty after the timeout.
    std::string nextReport() const { return m_socket.next(); }

private:
    const DatagramSocket m_socket{m_host.folder() + "/notify"};
};
} // namespace

TEST_F(ServiceManagerTest, HearsThatAllModulesRunAndThatTheHostStops)
{
    m_host.setConfiguration(configurationOf({scripted("one")}));
    ASSERT_TRUE(m_host.start());
    EXPECT_EQ(nextReport(), "READY=1");
    EXPECT_EQ(m_host.stop(), 0);
    EXPECT_EQ(nextReport(), "STOPPING=1");
}

TEST_F(ServiceManagerTest, HearsThatTheConfigurationIsReloadedAndHowItEnded)
{
    m_host.setConfiguration(configurationOf({scripted("one")}));
    ASSERT_TRUE(m_host.start());
    EXPECT_EQ(nextReport(), "READY=1");
    m_host.sendSignal(SIGHUP);
    EXPECT_THAT(nextReport(), testing::MatchesRegex("RELOADING=1\nMONOTONIC_USEC=[0-9]+"));
    EXPECT_EQ(nextReport(), "READY=1\nSTATUS=Reloaded the configuration");
    const QString file = m_host.setConfigurationText("{\n");
    m_host.sendSignal(SIGHUP);
    EXPECT_THAT(nextReport(), testing::StartsWith("RELOADING=1\n"));
    EXPECT_EQ(nextReport(), "READY=1\nSTATUS=The configuration stays as it was: " +
                                file.toStdString() + ":1:1: unterminated object");
}

TEST_F(ServiceManagerTest, HearsThatNothingHangsForAsLongAsItWatches)
{
    m_host.setConfiguration(configurationOf({scripted("one"), scripted("two")}));
    m_host.setEnvironment("WATCHDOG_USEC", "4000000");
    ASSERT_TRUE(m_host.start());
    EXPECT_EQ(nextReport(), "READY=1");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(nextReport(), "WATCHDOG=1");
    }
}

TEST_F(ServiceManagerTest, HearsWhichModuleHangs)
{
    const QString fifo = makeFifo("never");
    m_host.setConfiguration(configurationOf(
        {scripted("one"), scripted("two", {{"workWaits", fifo}}), scripted("three")}));
    m_host.setEnvironment("WATCHDOG_USEC", "2000000");
    ASSERT_TRUE(m_host.start());
    EXPECT_EQ(nextReport(), "READY=1");
    std::string report = nextReport();
    while (report == "WATCHDOG=1") {
        report = nextReport();
    }
    EXPECT_EQ(report, "STATUS=A module hangs: two\nWATCHDOG=trigger");
    EXPECT_TRUE(m_host.waitForLog("FATAL Host [main] A module hangs: two"));
}
