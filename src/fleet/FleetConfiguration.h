// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fleet/Permissions.h"
#include "fleet/protocol/FleetCall.h"
#include "mqtt/MqttSettings.h"

#include <QMap>

/// What the device is and how it reaches the fleet. Documented in docs/fleet.md.
struct FleetConfiguration
{
    QString device;
    QStringList groups;
    QString bus;   ///< empty: the session's, or that of TAVO_BUS
    QString store; ///< the file with calls and answers
    MqttSettings broker;
    Permissions permissions;
    int timeoutMs = 0; ///< of messages that do not say one

    QString
        discoveryPrefix; ///< of the topics with which home automation finds the device; empty: none
    QString title;       ///< the device's name for people
    QMap<QString, QString>
        buttons; ///< the sounds that home automation has buttons for, by their titles

    /// Throws a std::runtime_error that names the file, the key and the reason.
    static FleetConfiguration fromFile(const QString &file);

    /// What the configuration in that file names but is not there: a line for each, with the key.
    QStringList missing(const QString &file) const;
};
