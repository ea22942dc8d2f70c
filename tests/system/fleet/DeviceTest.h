// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/broker/Broker.h"
#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/host/HostProcess.h"
#include "support/program/Program.h"
#include "support/Text.h"
#include <client/TavoClient.h>
#include <core/tavo.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fleet/protocol/FleetTopics.h>
#include <iostream>
#include <mqtt/MqttConnection.h>

/// A device with a host, and a controller in the test, both at a broker.
class DeviceTest : public testing::Test
{
protected:
    static constexpr std::chrono::seconds s_timeout{20};

    explicit DeviceTest(std::unique_ptr<Broker> broker = std::make_unique<Broker>(),
                        const QString &busSettings = {})
        : m_bus(busSettings)
        , m_broker(std::move(broker))
    {
    }

    void SetUp() override
    {
        writeConfiguration();
        m_controller = makeController();
        m_controller->start();
    }

    void TearDown() override
    {
        if (HasFailure()) {
            std::cout << "The program wrote:\n"
                      << (m_device ? m_device->output() + m_device->error() : std::string())
                      << "The host wrote:\n"
                      << (m_host ? m_host->log().toStdString() : std::string()) << "Messages:\n";
            for (const MqttMessage &message : m_messages) {
                std::cout << message.topic.toStdString() << ' ' << message.payload.toStdString()
                          << '\n';
            }
        }
    }

    std::unique_ptr<MqttConnection> makeController()
    {
        MqttSettings settings = MqttSettings::fromUrl(m_broker->uri());
        settings.minReconnectMs = 10;
        settings.maxReconnectMs = 100;
        adapt(settings);
        auto connection = std::make_unique<MqttConnection>(settings);
        connection->subscribe("tavo/v1/#");
        connection->subscribe("homeassistant/#");
        QObject::connect(connection.get(), &MqttConnection::received, connection.get(),
                         [this](const MqttMessage &message) { m_messages.push_back(message); });
        return connection;
    }

    /// Changes the settings of the controller.
    virtual void adapt(MqttSettings & /*settings*/) {}

    void startHost(const QJsonArray &more = {})
    {
        m_host = std::make_unique<HostProcess>();
        const QJsonObject devices{{"mainDevice", "null"}, {"notificationsDevice", "null"}};
        const QJsonObject dbus{{"bus", m_bus.address()}, {"limits", m_limits}};
        QJsonArray modules{"powermanager", QJsonObject{{"name", "player"}, {"config", devices}},
                           "notifications", QJsonObject{{"name", "dbus"}, {"config", dbus}}};
        for (const QJsonValue &module : more) {
            modules.append(module);
        }
        m_host->setConfiguration({{"modules", modules}});
        ASSERT_TRUE(m_host->startReady()) << m_host->log().toStdString();
        ASSERT_TRUE(m_host->waitForLog("Serving org.tavo.Model1"));
    }

    /// With the module attention, which shows actions.
    void startHostWithAttention()
    {
        const QJsonObject config{{"settings", m_folder.filePath("attention.json")},
                                 {"speech", QJsonObject{{"folder", m_folder.filePath("speech")}}},
                                 {"history", QJsonObject{{"file", m_folder.filePath("h.db")}}}};
        startHost({QJsonObject{{"name", "attention"}, {"config", config}}});
    }

    /// Makes a short sound in the folder.
    void makeSound()
    {
        QFile file(m_folder.filePath("bell.wav"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::fromHex("52494646"
                                       "2c000000"
                                       "57415645"
                                       "666d7420"
                                       "10000000"
                                       "01000100"
                                       "401f0000"
                                       "803e0000"
                                       "02001000"
                                       "64617461"
                                       "08000000"
                                       "0000000000000000"));
    }

    void set(const QString &key, const QJsonValue &value)
    {
        m_configuration.insert(key, value);
        writeConfiguration();
    }

    /// Makes a sound that can be named "bell".
    void allowBell()
    {
        makeSound();
        set("allow", QJsonObject{{"sounds", QJsonObject{{"folder", m_folder.path()}}}});
    }

    void writeConfiguration()
    {
        const QJsonObject broker{{"url", m_broker->uri()},
                                 {"reconnect", QJsonObject{{"min", 10}, {"max", 100}}}};
        if (!m_configuration.contains("broker")) {
            m_configuration.insert("broker", broker);
        }
        QFile file(m_folder.filePath("fleet.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(m_configuration).toJson());
    }

    /// Starts the device and waits until it can be called.
    void startDevice()
    {
        launchDevice();
        ASSERT_TRUE(waitForMessage("tavo/v1/porch/online", "1"));
    }

    void launchDevice()
    {
        forgetMessages();
        m_device = std::make_unique<Program>(QStringLiteral(TAVO_FLEET_PROGRAM));
        m_device->setEnvironment("TAVO_BUS", m_bus.address());
        m_device->setEnvironment("STATE_DIRECTORY", m_folder.path());
        m_device->start({"--config", m_folder.filePath("fleet.json")});
    }

    /// Forgets what has been received, of which retained messages may be old.
    void forgetMessages() { m_messages.clear(); }

    int count(const QString &topic, const QByteArray &part = {}) const
    {
        return int(
            std::count_if(m_messages.begin(), m_messages.end(), [&](const MqttMessage &message) {
                return message.topic == topic && message.payload.contains(part);
            }));
    }

    bool waitForMessage(const QString &topic, const QByteArray &part = {}, int times = 1)
    {
        return waitFor([&] { return count(topic, part) >= times; }, s_timeout);
    }

    bool waitForAnswer(const QByteArray &part) { return waitForMessage(s_answers, part); }
    bool waitForEvent(const QByteArray &part)
    {
        return waitForMessage("tavo/v1/porch/event", part);
    }

    /// Waits until the device has logged the text.
    bool waitForError(const std::string &text)
    {
        return waitFor([&] { return m_device->error().find(text) != std::string::npos; },
                       s_timeout);
    }

    bool publish(const QString &topic, const QByteArray &payload, bool isRetained = false)
    {
        MqttMessage message;
        message.topic = topic;
        message.payload = payload;
        message.isRetained = isRetained;
        return waitFor([this] { return m_controller->isConnected(); }, s_timeout) &&
               m_controller->publish(message) >= 0;
    }

    void call(const QByteArray &arguments, const QString &topic = "tavo/v1/porch/call")
    {
        ASSERT_TRUE(publish(topic, "{\"from\":\"desk\"," + arguments + "}"));
    }

    /// The paths of what the host shows.
    QStringList openMessages()
    {
        const auto reply = client().rows(TavoNotificationDisplayQueuePath());
        EXPECT_TRUE(waitFor([&] { return reply.isFinished(); }, s_timeout));
        QStringList paths;
        for (const QVariant &row : reply.value()) {
            paths.append(CMPath::fromQVariant(row).toString());
        }
        return paths;
    }

    /// Does what a person does who closes the message on display.
    void closeMessage()
    {
        const QStringList paths = openMessages();
        ASSERT_FALSE(paths.isEmpty());
        const auto reply = client().close(CMPath(paths.first()));
        ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }, s_timeout));
    }

    TavoClient &client()
    {
        if (!m_client) {
            m_client = std::make_unique<TavoClient>(m_bus.address());
        }
        return *m_client;
    }

    static constexpr auto s_answers = "tavo/v1/porch/answer/desk";

    QTemporaryDir m_folder;
    PrivateBus m_bus;
    std::unique_ptr<Broker> m_broker;
    std::unique_ptr<HostProcess> m_host;
    QJsonObject m_limits; ///< of the host for its clients
    QJsonObject m_configuration{{"device", "porch"}, {"groups", QJsonArray{"all", "floor-1"}}};
    std::unique_ptr<Program> m_device;
    std::vector<MqttMessage> m_messages;
    std::unique_ptr<MqttConnection> m_controller;
    std::unique_ptr<TavoClient> m_client;
};
