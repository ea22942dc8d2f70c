// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <fleet/protocol/FleetTopics.h>

/// What a device has published about itself.
struct FleetDevice
{
    bool isOnline = false;
    QVariantHash info;
    QMap<QString, QVariant> states; ///< by what they are about

    QStringList groups() const { return info.value(QStringLiteral("groups")).toStringList(); }
    /// Every device is in "all".
    bool isIn(const QString &group) const
    {
        return group == QLatin1String("all") || groups().contains(group);
    }
};

/// The devices of the fleet, as far as messages have told.
class FleetDevices
{
public:
    /// Takes what a device says about itself. Other messages, and those that can't be read, change nothing.
    void take(const FleetTopic &topic, const QByteArray &payload);

    /// By their names.
    const QMap<QString, FleetDevice> &all() const { return m_devices; }
    FleetDevice device(const QString &name) const { return m_devices.value(name); }

    /// The names of the devices that are in the group.
    QStringList inGroup(const QString &group) const;

private:
    QMap<QString, FleetDevice> m_devices;
};
