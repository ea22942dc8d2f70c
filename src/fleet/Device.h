// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fleet/Calls.h"
#include "fleet/publishing/StateTopics.h"

/// This device in the fleet: tells that it is there, and takes calls.
///
/// The device counts as online when a message that it sent to itself has come back: some brokers grant
/// subscriptions that they then do not serve.
class Device : public QObject
{
    Q_OBJECT

public:
    Device(const FleetConfiguration &configuration, const QString &bus, FleetStore &store);

    void start();
    /// Tells that the device goes, and disconnects.
    void stop();

private Q_SLOTS:
    void on_connection_connected(bool hasSession);
    void on_connection_disconnected(const QString &reason);
    void on_connection_received(const MqttMessage &message);
    void on_connection_refused(int number, const QString &reason);
    void on_connection_subscriptionRefused(const QString &filter, const QString &reason);
    void on_client_availableChanged(bool available);
    void on_pingTimer_timeout();

private:
    void ping();
    void tellOnline();
    void takeCall(const MqttMessage &message, const QString &group);
    void takeEnd(const MqttMessage &message, const QString &group);
    qint64 deadlineOf(const FleetCall &call, const MqttMessage &message) const;
    MqttMessage onlineMessage(bool isOnline) const;
    MqttMessage infoMessage() const;

    const FleetConfiguration &m_configuration;
    TavoClient m_client;
    MqttConnection m_connection;
    Outbox m_outbox;
    Calls m_calls;
    StateTopics m_states;
    QTimer m_pingTimer;
    QString m_pingId;      ///< empty: the subscription is proven
    int m_pingNumber = -1; ///< of the message
    QString m_lastReason;  ///< why there is no connection
};
