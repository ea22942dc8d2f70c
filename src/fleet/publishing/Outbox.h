// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fleet/store/FleetStore.h"
#include "mqtt/MqttConnection.h"

#include <QHash>
#include <QObject>
#include <QTimer>

#include <vector>

/// Publishes what the store keeps, and removes it there when the broker has it. Publishes again what the broker
/// has not acknowledged when the connection was lost.
class Outbox : public QObject
{
    Q_OBJECT

public:
    Outbox(MqttConnection &connection, FleetStore &store);

    /// Messages that the store has got.
    void send(const std::vector<OutgoingMessage> &messages);

    /// Messages that the store could not take. They are lost if there is no connection.
    void sendOnce(const std::vector<OutgoingMessage> &messages);

private Q_SLOTS:
    void on_connection_connected(bool hasSession);
    void on_connection_disconnected(const QString &reason);
    void on_connection_published(int number);
    void on_connection_refused(int number, const QString &reason);
    void on_flushTimer_timeout();

private:
    void publish(const OutgoingMessage &message);
    static MqttMessage packetOf(const OutgoingMessage &message);
    void fill();
    void remove(int number);

    MqttConnection &m_connection;
    FleetStore &m_store;
    QHash<int, qint64> m_inFlight; ///< numbers in the store by those of the connection
    qint64 m_last = 0;             ///< the number in the store of the last one that was published
    QTimer m_flushTimer;           ///< until the store writes what is removed
    bool m_isBehind = true;        ///< the store has some after it
};
