// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/commands/fleet/FleetCommand.h"

/// Lists the devices of the fleet, and what they do.
class FleetListCommand : public FleetCommand
{
    Q_OBJECT

public:
    using FleetCommand::FleetCommand;

private:
    QStringList filters() const override;
    void onDevicesKnown() override;
    void onTimeUp() override;

    void printDevices();
    QString lineOf(const QString &name, const FleetDevice &device);
};
