// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fleet/protocol/FleetTopics.h"
#include "mqtt/MqttConnection.h"
#include <client/TavoClient.h>
#include <core/records/notifications.h>

#include <QElapsedTimer>
#include <QJsonObject>
#include <QMap>
#include <QTimer>

/// Publishes what the host shows and plays, retained: each topic at least 100 ms after its last message and when the
/// broker has that, the newest state, and all of them after each connecting.
class StateTopics : public QObject
{
    Q_OBJECT

public:
    StateTopics(MqttConnection &connection, TavoClient &client, const QString &device);

private Q_SLOTS:
    void on_client_availableChanged(bool available);
    void on_client_valueChanged(const CMPath &path, const QVariant &value);
    void on_client_changesDropped(const CMPath &path);
    void on_client_subscriptionFailed(const CMPath &path, const CMError &error);
    void on_connection_connected(bool hasSession);
    void on_connection_published(int number);
    void on_timer_timeout();
    void on_displayTimer_timeout();

private:
    struct State
    {
        QByteArray payload;
        bool isDue = false;
        qint64 last = 0;   ///< when it was published, by m_clock
        int inFlight = -1; ///< the number of the message that the broker does not have yet
    };

    void read(const CMPath &path);
    void readNext();
    void readLater(const CMPath &path);
    void showMessage(const TavoNotificationDisplayCurrent &current);
    void describe();
    void set(const char *what, const QJsonObject &state);
    void publishDue();

    MqttConnection &m_connection;
    TavoClient &m_client;
    const QString m_device;
    QMap<QString, State> m_states;
    QElapsedTimer m_clock;
    QTimer m_timer;
    QVector<CMPath> m_unread; ///< are still to be read
    bool m_isReading = false;
    QTimer m_readTimer; ///< until the next is read, after the host has refused one
    TavoNotificationDisplayCurrent m_current;
    QTimer m_displayTimer;    ///< until the message on display is described again
    bool m_isPaused = false;  ///< until then, its changes are not subscribed to
    int m_displayChanges = 0; ///< tells whether a description is still of the newest message
    int m_described = 0;      ///< the change whose message was described last
};
