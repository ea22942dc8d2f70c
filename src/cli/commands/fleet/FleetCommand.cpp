// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/fleet/FleetCommand.h"

#include "cli/commands/fleet/FleetBroker.h"
#include "cli/commands/fleet/FleetCallCommand.h"
#include "cli/commands/fleet/FleetListCommand.h"
#include "cli/commands/fleet/FleetWatchCommand.h"
#include <core/base/connect.h>

#include <QUuid>

#include <algorithm>
#include <fleet/protocol/FleetCall.h>
#include <stdexcept>

namespace {
QString newName()
{
    constexpr int length = 12;
    return QStringLiteral("tavo-") + QUuid::createUuid().toString(QUuid::Id128).left(length);
}
} // namespace

FleetCommand::FleetCommand(const Options &options, TavoClient &client, Terminal &terminal)
    : Command(options, client, terminal)
    , m_name(newName())
{
    m_timeLimit.setSingleShot(true);
    m_silence.setSingleShot(true);
    tavoConnect(&m_timeLimit, &QTimer::timeout, this, &FleetCommand::on_timeLimit_timeout);
    tavoConnect(&m_silence, &QTimer::timeout, this, &FleetCommand::devicesKnown);
}

std::unique_ptr<Command> FleetCommand::create(const Options &options, TavoClient &client,
                                              Terminal &terminal)
{
    if (options.fleetAction == "list") {
        return std::make_unique<FleetListCommand>(options, client, terminal);
    }
    if (options.fleetAction == "watch") {
        return std::make_unique<FleetWatchCommand>(options, client, terminal);
    }
    return std::make_unique<FleetCallCommand>(options, client, terminal);
}

int FleetCommand::timeLimitMs() const
{
    constexpr int msPerSecond = 1000;
    return int(options().replyTimeoutSeconds * msPerSecond);
}

bool FleetCommand::isChosen(const QString &device) const
{
    const auto &names = options().fleetDevices;
    const auto &groups = options().fleetGroups;
    const FleetDevice known = m_devices.device(device);
    return (names.empty() && groups.empty()) ||
           std::find(names.begin(), names.end(), device.toStdString()) != names.end() ||
           std::any_of(groups.begin(), groups.end(), [&known](const std::string &group) {
               return known.isIn(QString::fromStdString(group));
           });
}

void FleetCommand::start()
{
    if (prepare() && connectToBroker()) {
        m_timeLimit.start(timeLimitMs());
        m_connection->start();
    }
}

bool FleetCommand::connectToBroker()
{
    const auto broker = fleetBroker(options());
    if (const auto *failure = std::get_if<ExitFailure>(&broker)) {
        fail(failure->code, failure->reason);
        return false;
    }
    MqttSettings settings = std::get<MqttSettings>(broker);
    settings.clientId = m_name;
    // Somebody is waiting.
    settings.minReconnectMs = 100;
    settings.maxReconnectMs = 2000;
    m_url = QStringLiteral("%1:%2").arg(settings.host).arg(settings.port);
    try {
        m_connection = new MqttConnection(settings, this);
    } catch (const std::runtime_error &error) {
        fail(ExitCode::Usage, QString::fromUtf8(error.what()));
        return false;
    }
    tavoConnect(m_connection, &MqttConnection::connected, this,
                &FleetCommand::on_connection_connected);
    tavoConnect(m_connection, &MqttConnection::received, this,
                &FleetCommand::on_connection_received);
    tavoConnect(m_connection, &MqttConnection::disconnected, this,
                &FleetCommand::on_connection_disconnected);
    tavoConnect(m_connection, &MqttConnection::refused, this, &FleetCommand::on_connection_refused);
    tavoConnect(m_connection, &MqttConnection::subscriptionRefused, this,
                &FleetCommand::on_connection_subscriptionRefused);
    const QString any = QStringLiteral("+");
    m_connection->subscribe(FleetTopics::online(any));
    m_connection->subscribe(FleetTopics::info(any));
    m_connection->subscribe(FleetTopics::call(m_name));
    for (const QString &filter : filters()) {
        m_connection->subscribe(filter);
    }
    return true;
}

void FleetCommand::on_connection_connected()
{
    m_hasBeenConnected = true;
    onConnected();
    if (isFinished() || m_areDevicesKnown) {
        return;
    }
    // Comes back after everything that the broker has retained.
    FleetCall ping;
    ping.id = m_name;
    publish({FleetTopics::call(m_name), ping.toJson()});
    // Where this user may not send it, silence tells, also if the broker ends the connection each time.
    constexpr int maxSilenceMs = 2000;
    if (!m_silence.isActive()) {
        m_silence.start(qMin(maxSilenceMs, timeLimitMs() / 2));
    }
}

void FleetCommand::devicesKnown()
{
    m_silence.stop();
    if (!m_areDevicesKnown && !isFinished()) {
        m_areDevicesKnown = true;
        onDevicesKnown();
    }
}

void FleetCommand::on_connection_received(const MqttMessage &message)
{
    const auto topic = FleetTopic::parse(message.topic);
    if (isFinished() || !topic) {
        return;
    }
    m_hasHeard = true;
    if (m_silence.isActive()) {
        m_silence.start();
    }
    if (topic->kind == FleetTopic::Kind::Call && topic->name == m_name) {
        devicesKnown();
        return;
    }
    m_devices.take(*topic, message.payload);
    onMessage(*topic, message);
}

void FleetCommand::on_connection_disconnected(const QString &reason)
{
    m_reason = reason;
    if (!isFinished()) {
        onDisconnected(reason);
    }
}

void FleetCommand::on_connection_refused(int number, const QString &reason)
{
    if (!isFinished()) {
        onRefused(number, reason);
    }
}

void FleetCommand::on_connection_subscriptionRefused(const QString &filter, const QString &reason)
{
    fail(ExitCode::Refused,
         QStringLiteral("the broker refuses to tell of %1: %2").arg(filter, reason));
}

void FleetCommand::on_timeLimit_timeout()
{
    if (!isFinished()) {
        onTimeUp();
    }
}

void FleetCommand::onTimeUp()
{
    if (!m_hasBeenConnected) {
        failUnavailable(m_reason.isEmpty() ? QStringLiteral("no answer") : m_reason);
    }
}

void FleetCommand::onDisconnected(const QString &reason)
{
    if (!m_hasBeenConnected) {
        failUnavailable(reason);
    }
}

/// Brokers grant subscriptions that they then do not serve.
void FleetCommand::failIfDeaf()
{
    if (!m_hasHeard) {
        fail(ExitCode::Refused,
             QStringLiteral("the broker %1 tells nothing about devices: this user may not read "
                            "tavo/v1/#, or there are none")
                 .arg(m_url));
    }
}

void FleetCommand::failUnavailable(const QString &reason)
{
    fail(ExitCode::Unavailable,
         QStringLiteral("the broker %1 can't be reached: %2").arg(m_url, reason));
}
