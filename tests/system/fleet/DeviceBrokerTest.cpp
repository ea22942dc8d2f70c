// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DeviceTest.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace {
/// A server that lets clients connect, or not, and then says no more.
class ScriptedServer
{
public:
    explicit ScriptedServer(const QByteArray &answer)
    {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this, answer] {
            ++m_connections;
            QTcpSocket *socket = m_server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, [socket, answer] {
                socket->readAll();
                socket->write(answer);
            });
        });
    }

    QJsonObject configuration() const
    {
        return {{"url", QStringLiteral("mqtt://127.0.0.1:%1").arg(m_server.serverPort())},
                {"reconnect", QJsonObject{{"min", 1}, {"max", 3600000}}}};
    }
    int connections() const { return m_connections; }

private:
    QTcpServer m_server;
    int m_connections = 0;
};
} // namespace

/// What a device does when its broker, its host or the network fail.
class DeviceBrokerTest : public DeviceTest
{
};

TEST_F(DeviceBrokerTest, CallsWaitForAHost)
{
    startDevice();
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    call(R"("id":"b","call":"ping")");
    startHost();
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    EXPECT_EQ(openMessages().size(), 1);
}

TEST_F(DeviceBrokerTest, CallsForADeviceThatIsAwayArriveLater)
{
    startHost();
    startDevice();
    m_device->sendSignal(SIGTERM);
    ASSERT_EQ(m_device->waitForExit(), 0);
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "0"));
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    startDevice();
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
}

TEST_F(DeviceBrokerTest, AnswersAndEventsWaitForTheBroker)
{
    startHost();
    startDevice();
    call(R"("id":"a","call":"show","title":"Water","timeout":0)");
    ASSERT_TRUE(waitForAnswer(R"("id":"a","shown":true)"));
    m_broker->kill();
    ASSERT_TRUE(waitFor([this] { return !m_controller->isConnected(); }, s_timeout));
    // The controller must be there first: the broker has forgotten its subscription.
    m_device->sendSignal(SIGSTOP);
    closeMessage();
    m_broker->start();
    ASSERT_TRUE(publish("tavo/v1/porch/ready", "1"));
    ASSERT_TRUE(waitForMessage("tavo/v1/porch/ready"));
    m_device->sendSignal(SIGCONT);
    ASSERT_TRUE(waitForEvent(R"("end":"dismissed","id":"a")"));
    EXPECT_EQ(count("tavo/v1/porch/event"), 1);
}

TEST_F(DeviceBrokerTest, AClientIdThatIsTakenOverIsNotFoughtFor)
{
    const ScriptedServer server(QByteArray::fromHex("2003000000"  // connected
                                                    "e0028e00")); // taken over
    set("broker", server.configuration());
    launchDevice();
    ASSERT_TRUE(waitForError("the broker says: Session taken over"));
    m_device->sendSignal(SIGTERM);
    EXPECT_EQ(m_device->waitForExit(), 0);
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(DeviceBrokerTest, ABrokerForMqtt311OnlyIsAnErrorThatSaysSo)
{
    const ScriptedServer server(QByteArray::fromHex("20020001")); // unacceptable protocol version
    set("broker", server.configuration());
    launchDevice();
    EXPECT_TRUE(waitForError("the broker does not speak MQTT 5"));
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(DeviceBrokerTest, TheEndIsQuickWhileAServerIsSilent)
{
    const ScriptedServer server({});
    set("broker", server.configuration());
    launchDevice();
    ASSERT_TRUE(waitFor([&] { return server.connections() == 1; }, s_timeout));
    m_device->sendSignal(SIGTERM);
    EXPECT_EQ(m_device->waitForExit(), 0);
}

TEST_F(DeviceBrokerTest, HomeAutomationFindsTheDevice)
{
    set("discovery", QJsonObject{{"prefix", "homeassistant"},
                                 {"title", "Porch"},
                                 {"buttons", QJsonObject{{"chime", "bell"}}}});
    startDevice();
    ASSERT_TRUE(waitForMessage("homeassistant/notify/tavo-porch/message/config",
                               R"("command_topic":"tavo/v1/porch/call")"));
    ASSERT_TRUE(waitForMessage("homeassistant/button/tavo-porch/button-chime/config"));
    ASSERT_TRUE(waitForMessage("homeassistant/binary_sensor/tavo-porch/sound/config",
                               R"("state_topic":"tavo/v1/porch/state/sound")"));
    for (const MqttMessage &message : m_messages) {
        const QJsonObject entity = QJsonDocument::fromJson(message.payload).object();
        if (message.topic.startsWith("homeassistant/")) {
            EXPECT_EQ(entity.value("availability_topic"), "tavo/v1/porch/online");
        }
    }
}
