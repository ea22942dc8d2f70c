// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"

#include <unistd.h>

class DeviceKeepAliveTest : public DeviceTest
{
};

TEST_F(DeviceKeepAliveTest, ABrokerThatDoesNotRespondIsNoticedAndReachedAgain)
{
    startHost();
    set("broker", QJsonObject{{"url", m_broker->uri()},
                              {"keepAlive", 10},
                              {"reconnect", QJsonObject{{"min", 10}, {"max", 100}}}});
    startDevice();
    m_broker->pause();
    ASSERT_TRUE(
        waitFor([this] { return m_device->error().find("no connection") != std::string::npos; },
                s_timeout));
    forgetMessages();
    m_broker->resume();
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    EXPECT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
}

TEST_F(DeviceKeepAliveTest, ASubscriptionThatIsGrantedAndNotServedIsNoticed)
{
    QFile access(m_folder.filePath("access"));
    ASSERT_TRUE(access.open(QIODevice::WriteOnly));
    access.write("topic write tavo/v1/+/call\ntopic readwrite tavo/v1/porch/info\n"
                 "topic readwrite tavo/v1/porch/online\n");
    access.close();
    m_broker->setConfiguration(
        QStringLiteral("allow_anonymous true\nacl_file %1\n").arg(access.fileName()));
    m_broker->stop();
    m_broker->start();
    launchDevice();
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/info"));
    ASSERT_TRUE(waitForError("calls do not arrive: does the broker let this device read "
                             "tavo/v1/porch/call?"));
    EXPECT_EQ(count("tavo/v1/porch/online", "1"), 0);
}

TEST_F(DeviceKeepAliveTest, ANameServerThatDoesNotReplyHoldsUpNothing)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can make a network without a name server";
    }
    startHost();
    set("broker", QJsonObject{{"url", "mqtt://broker.test"}});
    QFile script(m_folder.filePath("run"));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("ip link set lo up; cd \"$1\"; echo nameserver 127.0.0.1 > resolv.conf\n"
                 "mount --bind resolv.conf /etc/resolv.conf\n"
                 "python3 -c 'import socket, time\n"
                 "s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)\n"
                 "s.bind((\"127.0.0.1\", 53))\n"
                 "s.settimeout(30)\n"
                 "s.recv(1000)\n"
                 "print(\"asked\", flush=True)\n"
                 "time.sleep(8)' &\n"
                 "exec \"$2\" --config fleet.json\n");
    script.close();
    m_device = std::make_unique<Program>(QStringLiteral("unshare"));
    m_device->setEnvironment("TAVO_BUS", m_bus.address());
    m_device->setEnvironment("STATE_DIRECTORY", m_folder.path());
    m_device->start({"--net", "--mount", "sh", script.fileName(), m_folder.path(),
                     QStringLiteral(TAVO_FLEET_PROGRAM)});
    ASSERT_TRUE(m_device->waitForOutput("asked"));
    ASSERT_TRUE(waitForError("the host is there"));
    m_device->sendSignal(SIGTERM);
    EXPECT_EQ(m_device->waitForExit(), 0);
}
