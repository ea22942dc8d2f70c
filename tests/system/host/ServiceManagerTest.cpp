// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// What the host reports to the service manager that has started it.

#include "system/host/HostTest.h"

#include <csignal>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace {
class ServiceManagerTest : public HostTest
{
protected:
    ~ServiceManagerTest() override { close(m_socket); }

    void SetUp() override
    {
        const QByteArray path = QFile::encodeName(m_host.folder() + "/notify");
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        ASSERT_LT(size_t(path.size()), sizeof(address.sun_path));
        std::copy(path.begin(), path.end(), address.sun_path);
        m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ASSERT_EQ(bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
        m_host.setEnvironment("NOTIFY_SOCKET", path);
    }

    /// The next report of the host; empty after the timeout.
    std::string nextReport() const
    {
        constexpr int timeoutMs = 20000;
        pollfd waiting{m_socket, POLLIN, 0};
        if (poll(&waiting, 1, timeoutMs) != 1) {
            return {};
        }
        std::string report(1000, '\0');
        report.resize(
            size_t(std::max<ssize_t>(0, recv(m_socket, report.data(), report.size(), 0))));
        return report;
    }

private:
    int m_socket = -1;
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
