// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/Command.h"
#include "cli/commands/fleet/FleetDevices.h"

#include <QTimer>

#include <mqtt/MqttConnection.h>

/// A command that talks to a fleet, through its broker. Needs no host.
class FleetCommand : public Command
{
    Q_OBJECT

public:
    FleetCommand(const Options &options, TavoClient &client, Terminal &terminal);

    /// Of the action that the options name.
    static std::unique_ptr<Command> create(const Options &options, TavoClient &client,
                                           Terminal &terminal);

    void start() final;

protected:
    /// What the command wants to hear, besides all that devices say about themselves.
    virtual QStringList filters() const { return {}; }

    /// Returns whether the command can begin; if not, it has failed.
    virtual bool prepare() { return true; }
    /// The broker accepts messages, for the first time or again.
    virtual void onConnected() {}
    /// What the broker knows about all devices has been received, as far as this user may read it. Once.
    virtual void onDevicesKnown() {}
    /// After m_devices has taken it.
    virtual void onMessage(const FleetTopic & /*topic*/, const MqttMessage & /*message*/) {}
    /// The time that --reply-timeout allows is up.
    virtual void onTimeUp();
    /// The connection was lost, or can't be made. It is tried again, unless the command has finished.
    virtual void onDisconnected(const QString &reason);
    /// The broker does not take the message with this number.
    virtual void onRefused(int /*number*/, const QString & /*reason*/) {}

    /// Returns a number for onRefused().
    int publish(const MqttMessage &message) { return m_connection->publish(message); }
    /// Whether the options name the device or a group of it, or neither devices nor groups.
    bool isChosen(const QString &device) const;

    /// How long devices have to answer, from start() on.
    virtual int timeLimitMs() const;
    bool hasBeenConnected() const { return m_hasBeenConnected; }
    const FleetDevices &devices() const { return m_devices; }
    /// The part of topics that is this program's: unused by others.
    const QString &name() const { return m_name; }

    /// Ends the program if the broker tells nothing to this user.
    void failIfDeaf();
    /// Ends the program: the broker can't be used.
    void failUnavailable(const QString &reason);
    QString lastReason() const { return m_reason; }

private Q_SLOTS:
    void on_connection_connected();
    void on_connection_received(const MqttMessage &message);
    void on_connection_disconnected(const QString &reason);
    void on_connection_refused(int number, const QString &reason);
    void on_connection_subscriptionRefused(const QString &filter, const QString &reason);
    void on_timeLimit_timeout();
    void devicesKnown();

private:
    bool connectToBroker();

    const QString m_name;
    QString m_url;
    QString m_reason;
    MqttConnection *m_connection = nullptr;
    FleetDevices m_devices;
    QTimer m_timeLimit;
    QTimer m_silence; ///< if the ping does not come back, silence tells that all has been received
    bool m_hasBeenConnected = false;
    bool m_areDevicesKnown = false;
    bool m_hasHeard = false; ///< something that the broker sends to this user
};
