// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/clients/ClientSounds.h"
#include "modules/dbus/clients/SoundAccess.h"
#include "modules/dbus/DbusConfiguration.h"
#include "SoundTheme.h"

#include <core/tavo.h>

#include <QHash>
#include <QObject>
#include <QSet>

#include <string>

/// The sounds of desktop notifications, at most one for each.
///
/// Thread and owner: its worker's. A sound that can't be played is a warning in the log: the
/// notification is shown without it.
class NotificationSounds : public QObject
{
    Q_OBJECT

public:
    NotificationSounds(ClientSounds &sounds, const DbusConfiguration::Sounds &configuration);

    /// Plays a notification's sound, in place of the one that it had: the file if one is named, as
    /// far as clients may have it played, or else the theme's sound for the event. It counts as one
    /// of the client's sounds until it ends.
    void play(const std::string &client, quint32 id, const QString &file, const QString &event,
              TavoNotificationItemPriority::Enum priority);

    /// Ends a notification's sound, if it has one that still sounds or waits.
    void stop(quint32 id);

    /// Lets a notification's sound end by itself.
    void release(quint32 id) { m_sounds.remove(id); }

private:
    QString allowedFile(const QString &file);
    void enqueue(const std::string &client, const TavoNotificationPlayerItem &item);
    void logOnce(const QString &refusal);

    ClientSounds &m_clientSounds;
    const SoundAccess m_access;
    const SoundTheme m_theme;
    QHash<quint32, QString> m_sounds; ///< what the player knows them by
    quint32 m_played = 0;
    QSet<QString> m_refused; ///< said in the log already
};
