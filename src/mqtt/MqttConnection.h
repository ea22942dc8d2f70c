// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mqtt/MqttMessage.h"
#include "mqtt/MqttSettings.h"

#include <QObject>

#include <memory>

class MqttNetwork;

/// A connection to a broker that speaks MQTT 5, kept up until stop().
///
/// Names are resolved and connections are made in a thread of its own, and afterwards the connection is served by the
/// event loop of the owner's thread: nothing here blocks the caller, but stop(). The signals are emitted from the
/// event loop.
///
/// A lost connection is tried again after a random time, from the shortest one in the settings to one that doubles
/// up to the longest. After the loss of the client id to another client, and if the broker can't be used at all,
/// the longest time counts.
class MqttConnection : public QObject
{
    Q_OBJECT

public:
    explicit MqttConnection(const MqttSettings &settings, QObject *parent = nullptr);
    ~MqttConnection() override; ///< Calls stop().

    /// What the broker publishes when the connection breaks. Before start().
    void setWill(const MqttMessage &will);

    void start();

    /// Sends what has been published and disconnects. Gives up after 2 s. Called from a slot of this object, it
    /// sends nothing.
    void stop();

    /// Subscribes with QoS 1, now and after each connecting.
    void subscribe(const QString &filter);
    /// Ends a subscription, also one that the broker remembers from another time.
    void unsubscribe(const QString &filter);

    /// Returns a number for published(), or -1 if the message is not sent: there is no connection, or the topic
    /// or the payload are impossible. No message is sent again after the connection has been lost.
    int publish(const MqttMessage &message);

    bool isConnected() const { return m_isConnected; }

    /// Ends the connection, as if it had been lost.
    void reconnect(const QString &reason);

    /// What one packet may have at most, in both directions.
    static constexpr int maxPacketBytes = 1 << 20;

Q_SIGNALS:
    /// hasSession: the broker remembers the client.
    void connected(bool hasSession);
    /// The connection has been lost, or can't be made. It is tried again.
    void disconnected(const QString &reason);
    /// The broker keeps the message until it is acknowledged, which is after handled().
    void received(const MqttMessage &message);
    /// All messages that had arrived have been emitted.
    void handled();
    /// The broker has the message; for QoS 0: it has been sent. Emitted at most once, and not after
    /// disconnected().
    void published(int number);
    /// The broker refuses the message.
    void refused(int number, const QString &reason);
    void subscriptionRefused(const QString &filter, const QString &reason);

private:
    friend class MqttNetwork;

    const std::shared_ptr<MqttNetwork> m_network; ///< also held while its signals are emitted
    bool m_isConnected = false;
};
