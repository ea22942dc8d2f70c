// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/publishing/Outbox.h"

#include "base/sqlite/SqliteError.h"
#include "fleet/FleetLog.h"
#include <core/base/connect.h>

#include <QDateTime>

namespace {
constexpr int maxInFlight = 100;
constexpr int flushMs = 100;
} // namespace

Outbox::Outbox(MqttConnection &connection, FleetStore &store)
    : m_connection(connection)
    , m_store(store)
{
    m_flushTimer.setSingleShot(true);
    m_flushTimer.setInterval(flushMs);
    tavoConnect(&m_flushTimer, &QTimer::timeout, this, &Outbox::on_flushTimer_timeout);
    tavoConnect(&connection, &MqttConnection::connected, this, &Outbox::on_connection_connected);
    tavoConnect(&connection, &MqttConnection::disconnected, this,
                &Outbox::on_connection_disconnected);
    tavoConnect(&connection, &MqttConnection::published, this, &Outbox::on_connection_published);
    tavoConnect(&connection, &MqttConnection::refused, this, &Outbox::on_connection_refused);
}

void Outbox::send(const std::vector<OutgoingMessage> &messages)
{
    for (const OutgoingMessage &message : messages) {
        if (m_isBehind || !m_connection.isConnected() || m_inFlight.size() >= maxInFlight) {
            m_isBehind = true;
        } else {
            publish(message);
        }
    }
}

void Outbox::sendOnce(const std::vector<OutgoingMessage> &messages)
{
    for (const OutgoingMessage &message : messages) {
        m_connection.publish(packetOf(message));
    }
}

MqttMessage Outbox::packetOf(const OutgoingMessage &message)
{
    constexpr qint64 msPerSecond = 1000;
    constexpr qint64 maxSeconds = 86400;
    MqttMessage packet;
    packet.topic = message.topic;
    packet.payload = message.payload;
    const qint64 left = message.expires - QDateTime::currentMSecsSinceEpoch();
    packet.expirySeconds = int(qBound<qint64>(1, left / msPerSecond, maxSeconds));
    return packet;
}

void Outbox::publish(const OutgoingMessage &message)
{
    const int number = m_connection.publish(packetOf(message));
    if (number >= 0) {
        m_inFlight.insert(number, message.number);
        m_last = message.number;
    } else {
        m_isBehind = true;
    }
}

/// Publishes what the store has, up to the limit.
void Outbox::fill()
{
    if (!m_isBehind || !m_connection.isConnected() || m_inFlight.size() >= maxInFlight) {
        return;
    }
    const int count = maxInFlight - m_inFlight.size();
    std::vector<OutgoingMessage> messages;
    try {
        messages = m_store.outgoing(m_last, count);
    } catch (const SqliteError &error) {
        FleetLog::error(QStringLiteral("answers and events can't be read: %1").arg(error.reason()));
    }
    m_isBehind = int(messages.size()) == count;
    for (const OutgoingMessage &message : messages) {
        publish(message);
    }
}

void Outbox::on_connection_connected(bool /*hasSession*/)
{
    m_last = 0;
    m_isBehind = true;
    fill();
}

void Outbox::on_connection_disconnected(const QString & /*reason*/)
{
    m_inFlight.clear();
    m_isBehind = true;
}

void Outbox::on_connection_published(int number)
{
    remove(number);
}

void Outbox::on_connection_refused(int number, const QString &reason)
{
    if (m_inFlight.contains(number)) {
        FleetLog::warning(QStringLiteral("an answer or event can't be published: %1").arg(reason));
        remove(number);
    }
}

void Outbox::remove(int number)
{
    const auto found = m_inFlight.find(number);
    if (found == m_inFlight.end()) {
        return;
    }
    try {
        m_store.remove(*found);
    } catch (const SqliteError &error) {
        // It is published once more after a restart.
        FleetLog::error(
            QStringLiteral("an answer or event can't be removed: %1").arg(error.reason()));
    }
    m_inFlight.erase(found);
    if (!m_flushTimer.isActive()) {
        m_flushTimer.start();
    }
    fill();
}

void Outbox::on_flushTimer_timeout()
{
    try {
        m_store.flush();
    } catch (const SqliteError &error) {
        FleetLog::error(
            QStringLiteral("what is published can't be removed: %1").arg(error.reason()));
    }
}
