// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/fleet/FleetDevices.h"

#include "base/Json.h"

void FleetDevices::take(const FleetTopic &topic, const QByteArray &payload)
{
    if (topic.kind == FleetTopic::Kind::Online) {
        m_devices[topic.name].isOnline = payload == "1";
        return;
    }
    const auto read = fromJson(payload);
    const auto *value = std::get_if<QVariant>(&read);
    if (value == nullptr) {
        return;
    }
    if (topic.kind == FleetTopic::Kind::Info) {
        m_devices[topic.name].info = value->toHash();
    } else if (topic.kind == FleetTopic::Kind::State) {
        m_devices[topic.name].states.insert(topic.detail, *value);
    }
}

QStringList FleetDevices::inGroup(const QString &group) const
{
    QStringList names;
    for (auto device = m_devices.begin(); device != m_devices.end(); ++device) {
        if (device->isIn(group)) {
            names.append(device.key());
        }
    }
    return names;
}
