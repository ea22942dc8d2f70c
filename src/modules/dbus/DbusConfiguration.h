// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "clients/ClientLimits.h"

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantHash>
#include <QVector>

/// The module's configuration. Members have the names of their keys.
struct DbusConfiguration
{
    /// Which sounds clients may play; section "sounds".
    struct Sounds
    {
        QStringList schemes; ///< in lower case; "file" includes paths
        QStringList folders; ///< where files must be, at any depth
        QVector<QUrl> hosts; ///< which servers may be asked: only host and port are used
        QString theme;       ///< whose sounds they may choose by name
    };

    QString bus;           ///< "session", "system" or an address
    bool notifications;    ///< whether to serve org.freedesktop.Notifications
    int defaultTimeoutMs;  ///< "defaultTimeout": of a notification that has none; 0: it stays
    int criticalTimeoutMs; ///< "criticalTimeout": the same of a critical notification
    ClientLimits limits;   ///< section "limits"
    Sounds sounds;

    /// Throws a std::runtime_error that names the key when a value is invalid.
    static DbusConfiguration fromHash(const QVariantHash &config);
};
