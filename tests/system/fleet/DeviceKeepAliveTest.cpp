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
