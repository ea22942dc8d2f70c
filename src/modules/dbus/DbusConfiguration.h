// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>
#include <QVariantHash>

/// What the module is told at its start, by the keys of the same names.
struct DbusConfiguration
{
    /// What one client may have and do, and what all of them together; section "limits".
    struct Limits
    {
        int openNotifications;
        int totalOpenNotifications;
        int requestsPerSecond; ///< on average; twice as many at once. 0: no limit
        int valueBytes;        ///< of a value's texts and bytes, and BusVariant::bytesPerValue
        int subscriptions;
        int inboxes;
        int sounds; ///< that wait or play
        int totalSounds;
        int totalRequestBytes; ///< of all clients' requests that wait for their answers
        int unreadBytes;       ///< of answers and signals
        int totalUnreadBytes;  ///< the same of all clients
    };

    /// Which sounds clients may have played; section "sounds".
    struct Sounds
    {
        QStringList schemes; ///< in small letters; "file" stands for paths too
        QStringList folders; ///< where files must be, at any depth
        QString theme;       ///< whose sounds they may choose by name
    };

    QString bus;           ///< "session", "system" or an address
    bool notifications;    ///< whether to serve org.freedesktop.Notifications
    int defaultTimeoutMs;  ///< "defaultTimeout": of a notification that names none
    int criticalTimeoutMs; ///< "criticalTimeout": of a critical one that names none. 0: it stays
    Limits limits;
    Sounds sounds;

    /// Throws a std::runtime_error that names the key for a configuration that can't be used.
    static DbusConfiguration fromHash(const QVariantHash &config);
};
