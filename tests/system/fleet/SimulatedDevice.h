// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fleet/protocol/FleetAnswer.h"
#include "fleet/protocol/FleetCall.h"
#include "fleet/protocol/FleetTopics.h"
#include "mqtt/MqttConnection.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <vector>

/// A device of the fleet without a host: answers calls as the test wants it. Lives in the test's thread.
class SimulatedDevice : public QObject
{
public:
    using Reply = std::function<std::optional<FleetAnswer>(const FleetCall &call)>;

    SimulatedDevice(const QString &name, MqttSettings settings, const QStringList &groups = {})
        : m_name(name)
        , m_groups(groups)
        , m_connection(withName(std::move(settings), name))
    {
        m_connection.setWill({FleetTopics::online(name), "0", 1, true});
        m_connection.subscribe(FleetTopics::call(name));
        for (const QString &group : groups) {
            m_connection.subscribe(FleetTopics::groupCall(group));
        }
        connect(&m_connection, &MqttConnection::connected, this, [this] {
            publish(FleetTopics::info(m_name),
                    R"({"groups":[")" + m_groups.join("\",\"").toUtf8() + "\"]}", true);
            publish(FleetTopics::online(m_name), "1", true);
        });
        connect(&m_connection, &MqttConnection::received, this, &SimulatedDevice::take);
        connect(&m_connection, &MqttConnection::published, this, [this] { ++m_published; });
        m_connection.start();
    }

    /// What it answers; nothing: no answer. By default: that it is shown.
    void setReply(Reply reply) { m_reply = std::move(reply); }

    /// All that it has been called, repeats included.
    const std::vector<FleetCall> &calls() const { return m_calls; }

    /// The broker knows it, and holds calls for it.
    bool isReady() const
    {
        constexpr int infoAndOnline = 2;
        return m_published >= infoAndOnline;
    }
    /// The broker has everything that was published.
    bool isIdle() const { return m_published == m_sent; }

    void publish(const QString &topic, const QByteArray &payload, bool isRetained = false)
    {
        ++m_sent;
        m_connection.publish({topic, payload, 1, isRetained});
    }

    /// Says goodbye, so that the broker has no will to publish.
    void leave()
    {
        publish(FleetTopics::online(m_name), "0", true);
        m_connection.stop();
    }

private:
    static MqttSettings withName(MqttSettings settings, const QString &name)
    {
        settings.clientId = name;
        constexpr int reconnectMs = 50;
        settings.minReconnectMs = reconnectMs;
        settings.maxReconnectMs = reconnectMs;
        return settings;
    }

    void take(const MqttMessage &message)
    {
        const auto call = std::get<FleetCall>(FleetCall::fromJson(message.payload));
        m_calls.push_back(call);
        FleetAnswer answer;
        answer.kind = FleetAnswer::Kind::Shown;
        auto reply = m_reply ? m_reply(call) : std::optional(answer);
        if (reply) {
            reply->id = call.id;
            reply->device = m_name;
            publish(FleetTopics::answer(m_name, call.from), reply->toJson());
        }
    }

    const QString m_name;
    const QStringList m_groups;
    Reply m_reply;
    std::vector<FleetCall> m_calls;
    int m_sent = 0;
    int m_published = 0;
    MqttConnection m_connection;
};
