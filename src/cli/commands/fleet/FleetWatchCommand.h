// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/fleet/FleetCommand.h"

/// Prints what devices say, until interrupted.
class FleetWatchCommand : public FleetCommand
{
    Q_OBJECT

public:
    using FleetCommand::FleetCommand;

    void interrupt(int signal) override;

private:
    QStringList filters() const override;
    void onDevicesKnown() override { failIfDeaf(); }
    void onMessage(const FleetTopic &topic, const MqttMessage &message) override;
    void onDisconnected(const QString &reason) override;
};
