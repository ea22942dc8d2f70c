// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"

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
