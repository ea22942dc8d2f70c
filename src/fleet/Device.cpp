// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/Device.h"

#include "fleet/ClockTime.h"
#include "fleet/FleetLog.h"
#include "fleet/protocol/FleetTopics.h"
#include "fleet/publishing/Discovery.h"
#include <core/base/connect.h>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

namespace {
constexpr int firstPingMs = 10000;
constexpr int laterPingMs = 60000;
constexpr int msPerSecond = 1000;
constexpr qint64 defaultDeadlineMs = 60000;
} // namespace

Device::Device(const FleetConfiguration &configuration, const QString &bus, FleetStore &store)
    : m_configuration(configuration)
    , m_client(bus)
    , m_connection(configuration.broker)
    , m_outbox(m_connection, store)
    , m_calls(configuration, store, m_outbox, m_client)
    , m_states(m_connection, m_client, configuration.device)
{
    m_pingTimer.setSingleShot(true);
    tavoConnect(&m_pingTimer, &QTimer::timeout, this, &Device::on_pingTimer_timeout);
    tavoConnect(&m_connection, &MqttConnection::connected, this, &Device::on_connection_connected);
    tavoConnect(&m_connection, &MqttConnection::disconnected, this,
                &Device::on_connection_disconnected);
    tavoConnect(&m_connection, &MqttConnection::received, this, &Device::on_connection_received);
    // Before the broker gets the acknowledgements.
    tavoConnect(&m_connection, &MqttConnection::handled, &m_calls, &Calls::commit);
    tavoConnect(&m_connection, &MqttConnection::refused, this, &Device::on_connection_refused);
    tavoConnect(&m_connection, &MqttConnection::subscriptionRefused, this,
                &Device::on_connection_subscriptionRefused);
    tavoConnect(&m_client, &TavoClient::availableChanged, this,
                &Device::on_client_availableChanged);
}

void Device::start()
{
    m_connection.setWill(onlineMessage(false));
    m_connection.subscribe(FleetTopics::call(m_configuration.device));
    for (const QString &group : m_configuration.groups) {
        m_connection.subscribe(FleetTopics::groupCall(group));
        m_connection.subscribe(FleetTopics::groupEnd(group));
    }
    m_connection.start();
}

void Device::stop()
{
    m_calls.commit();
    m_connection.publish(onlineMessage(false));
    m_connection.stop();
}

MqttMessage Device::onlineMessage(bool isOnline) const
{
    MqttMessage message;
    message.topic = FleetTopics::online(m_configuration.device);
    message.payload = isOnline ? "1" : "0";
    message.isRetained = true;
    return message;
}

MqttMessage Device::infoMessage() const
{
    const QJsonObject info{
        {QStringLiteral("device"), m_configuration.device},
        {QStringLiteral("title"), m_configuration.title},
        {QStringLiteral("version"), QStringLiteral(TAVO_VERSION)},
        {QStringLiteral("calls"), QJsonArray::fromStringList(m_configuration.permissions.calls())},
        {QStringLiteral("groups"), QJsonArray::fromStringList(m_configuration.groups)}};
    MqttMessage message;
    message.topic = FleetTopics::info(m_configuration.device);
    message.payload = QJsonDocument(info).toJson(QJsonDocument::Compact);
    message.isRetained = true;
    return message;
}

void Device::on_connection_connected(bool /*hasSession*/)
{
    m_lastReason.clear();
    FleetLog::info(QStringLiteral("connected to %1").arg(m_configuration.broker.host));
    m_connection.publish(infoMessage());
    for (const MqttMessage &message : discoveryMessages(m_configuration)) {
        m_connection.publish(message);
    }
    ping();
    m_pingTimer.start(firstPingMs);
}

void Device::on_connection_disconnected(const QString &reason)
{
    m_pingTimer.stop();
    if (reason != m_lastReason) { // It is tried again and again.
        FleetLog::warning(
            QStringLiteral("no connection to %1: %2").arg(m_configuration.broker.host, reason));
        m_lastReason = reason;
    }
}

void Device::ping()
{
    m_pingId = QStringLiteral("ping-") + QUuid::createUuid().toString(QUuid::Id128);
    FleetCall call;
    call.id = m_pingId;
    call.from = m_configuration.device;
    MqttMessage message;
    message.topic = FleetTopics::call(m_configuration.device);
    message.payload = call.toJson();
    message.expirySeconds = firstPingMs / msPerSecond;
    m_pingNumber = m_connection.publish(message);
}

void Device::on_pingTimer_timeout()
{
    FleetLog::error(QStringLiteral("calls do not arrive: does the broker let this device read %1?")
                        .arg(FleetTopics::call(m_configuration.device)));
    ping();
    m_pingTimer.start(laterPingMs);
}

void Device::tellOnline()
{
    m_pingTimer.stop();
    m_pingId.clear();
    m_pingNumber = -1;
    m_connection.publish(onlineMessage(true));
}

void Device::on_connection_refused(int number, const QString &reason)
{
    if (number == m_pingNumber && !m_pingId.isEmpty()) {
        FleetLog::warning(
            QStringLiteral("whether calls arrive is not known, because this device may not "
                           "write to %1: %2")
                .arg(FleetTopics::call(m_configuration.device), reason));
        tellOnline();
    } else {
        // Some brokers end the connection after this.
        FleetLog::error(
            QStringLiteral("a message is refused: %1. Is the certificate or user that of "
                           "%2, and may %2 write its topics?")
                .arg(reason, m_configuration.device));
    }
}

void Device::on_connection_subscriptionRefused(const QString &filter, const QString &reason)
{
    FleetLog::error(QStringLiteral("no subscription to %1: %2").arg(filter, reason));
}

void Device::on_client_availableChanged(bool available)
{
    if (available) {
        FleetLog::info(QStringLiteral("the host is there"));
    } else {
        FleetLog::warning(
            QStringLiteral("no host, calls wait for it: %1").arg(m_client.unavailableReason()));
    }
}

void Device::on_connection_received(const MqttMessage &message)
{
    const auto topic = FleetTopic::parse(message.topic);
    const bool isToDevice =
        topic && topic->kind == FleetTopic::Kind::Call && topic->name == m_configuration.device;
    const bool isToGroup = topic && m_configuration.groups.contains(topic->name);
    if (isToDevice) {
        takeCall(message, {});
    } else if (isToGroup && topic->kind == FleetTopic::Kind::GroupCall) {
        takeCall(message, topic->name);
    } else if (isToGroup && topic->kind == FleetTopic::Kind::GroupEnd) {
        takeEnd(message, topic->name);
    } else {
        // From a session with another configuration.
        FleetLog::warning(
            QStringLiteral("a message to %1 is not for this device").arg(message.topic));
        m_connection.unsubscribe(message.topic);
    }
}

void Device::takeCall(const MqttMessage &message, const QString &group)
{
    if (message.isRetained && message.payload.isEmpty()) {
        return; // It removes one.
    }
    if (message.isRetained) {
        FleetLog::warning(
            QStringLiteral(
                "a retained call at %1 is ignored, as it would come again and again: publish "
                "calls without the retain flag")
                .arg(message.topic));
        return;
    }
    const auto read = FleetCall::fromJson(message.payload);
    if (const auto *bad = std::get_if<FleetCall::Bad>(&read)) {
        m_calls.refuse(*bad);
        return;
    }
    const auto &call = std::get<FleetCall>(read);
    const bool isOwnPing =
        call.kind == FleetCall::Kind::Ping && call.from == m_configuration.device;
    if (!isOwnPing) {
        m_calls.take(call, message.payload, group, deadlineOf(call, message));
    } else if (call.id == m_pingId) {
        tellOnline();
    }
}

void Device::takeEnd(const MqttMessage &message, const QString &group)
{
    const auto event = FleetEvent::fromJson(message.payload);
    if (!message.isRetained && std::holds_alternative<FleetEvent>(event)) {
        m_calls.endWithGroup(std::get<FleetEvent>(event), group);
    }
}

/// A device without a clock relies on the broker's.
qint64 Device::deadlineOf(const FleetCall &call, const MqttMessage &message) const
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    return call.expires > 0 && isClockSet()
               ? call.expires
               : now + qint64(message.expirySeconds) * msPerSecond + defaultDeadlineMs;
}
