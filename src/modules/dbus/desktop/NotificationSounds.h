// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/clients/ClientSounds.h"
#include "NotifyHints.h"
#include "SoundTheme.h"
#include <core/tavo.h>

#include <QMap>
#include <QObject>
#include <QSet>

#include <optional>
#include <string>

/// The sounds of desktop notifications, at most one for each.
///
/// Owned by the worker, used in its thread. A sound that can't be played is logged as a warning, and its
/// notification is shown without it.
class NotificationSounds : public QObject
{
    Q_OBJECT

public:
    NotificationSounds(ClientSounds &sounds, const QString &theme);

    void setTheme(const QString &theme) { m_theme = SoundTheme(theme); }

    /// Finds the sound of a notification that the client requests: the file, if one is given and allowed,
    /// or else the theme's sound for the event. Its location is empty if there is none. See
    /// ClientSounds::check() for when to call it.
    AllowedSound find(const std::string &client, const NotifyHints &hints);

    /// Plays the sound that was found for a notification in place of its previous one. It counts as one of
    /// the client's sounds. The request is the notification's id for the module for attention, which then
    /// decides about the sound; empty without that module.
    void play(const std::string &client, quint32 id, const AllowedSound &found,
              TavoNotificationItemPriority::Enum priority, const QString &request);

    /// Cancels a notification's sound, if it has one.
    void stop(quint32 id);

    /// Lets a notification's sound play to its end.
    void release(quint32 id) { m_sounds.remove(id); }

private:
    bool enqueue(const std::string &client, const TavoNotificationPlayerItem &item,
                 const std::optional<OpenedSound> &file, const QString &request);
    bool playIfFound(const std::string &client, quint32 id, const AllowedSound &found,
                     TavoNotificationItemPriority::Enum priority, const QString &request);
    void logOnce(const QString &refusal);

    ClientSounds &m_clientSounds;
    SoundTheme m_theme;
    QMap<quint32, QString> m_sounds; ///< their ids for the player, by notification
    QSet<QString> m_refused;         ///< already logged
};
