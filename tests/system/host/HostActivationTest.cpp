// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A host that the session bus starts when a program calls it.

#include "HostTest.h"
#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"

#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/syscall.h>

namespace {
using namespace std::chrono_literals;

class HostActivationTest : public HostTest
{
protected:
    ~HostActivationTest() override
    {
        if (m_process >= 0) {
            syscall(SYS_pidfd_send_signal, m_process, SIGKILL, nullptr, 0);
            close(m_process);
        }
    }

    void SetUp() override
    {
        m_host.setConfiguration(configurationOf({"powermanager", "dbus"}));
        const QString script = m_host.writeFile(
            "start", "echo $$ > " + file("pid") + "\nexec " + m_host.program().toUtf8() +
                         " --config " + file("host.json") + " 2> " + file("log") + '\n');
        m_host.writeFile("org.tavo.Model1.service",
                         "[D-BUS Service]\nName=org.tavo.Model1\nExec=/bin/sh " + script.toUtf8() +
                             '\n');
        m_bus = std::make_unique<PrivateBus>(
            QStringLiteral("<servicedir>%1</servicedir>").arg(m_host.folder()));
    }

    /// Calls the host, which the bus starts for that.
    void startByCall()
    {
        BusClient client(m_bus->address());
        client.setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.freedesktop.DBus.Peer");
        ASSERT_TRUE(client.call("Ping").succeeds());
        m_process = int(syscall(SYS_pidfd_open, contentOf("pid").trimmed().toInt(), 0));
        ASSERT_GE(m_process, 0);
    }

    bool hasEnded(std::chrono::milliseconds timeout) const
    {
        pollfd process{m_process, POLLIN, 0};
        return poll(&process, 1, int(timeout.count())) == 1;
    }

    QByteArray contentOf(const char *name) const
    {
        QFile content(QString::fromUtf8(file(name)));
        return content.open(QIODevice::ReadOnly) ? content.readAll() : QByteArray();
    }

    PrivateBus &bus() { return *m_bus; }

    int m_process = -1; ///< a descriptor

private:
    QByteArray file(const char *name) const { return (m_host.folder() + '/').toUtf8() + name; }

    std::unique_ptr<PrivateBus> m_bus;
};

TEST_F(HostActivationTest, EndsWithItsSessionBus)
{
    startByCall();
    bus().stop();
    EXPECT_TRUE(hasEnded(20s));
    EXPECT_THAT(contentOf("log").toStdString(), testing::HasSubstr("Host stopped"));
}

TEST_F(HostActivationTest, IsNeededForThat)
{
    m_host.setEnvironment("DBUS_SESSION_BUS_ADDRESS", bus().address());
    ASSERT_TRUE(m_host.startReady());
    ASSERT_TRUE(m_host.waitForLog("Connected to the bus"));
    bus().stop();
    ASSERT_TRUE(m_host.waitForLog("There is no bus, retrying"));
    m_process = int(syscall(SYS_pidfd_open, int(m_host.processId()), 0));
    ASSERT_GE(m_process, 0);
    EXPECT_FALSE(hasEnded(1500ms));
}
} // namespace
