// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>

/// A message to or from a broker.
struct MqttMessage
{
    QString topic;
    QByteArray payload;
    int qos = 1;
    bool isRetained = false;
    int expirySeconds = 0; ///< the broker drops it after this time; 0: never
};

Q_DECLARE_METATYPE(MqttMessage)
