// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "PlayerConfiguration.h"
#include <core/records/player.h>

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QTimer>

class UriSimplePlayer;

/// The main audio: plays one source of music in a loop, at the user's volume, and quieter while it
/// is ducked.
///
/// Runs in its worker's thread; owned by the worker. The ducking and the volume are kept while
/// nothing plays.
///
/// Music that fails is tried again, as often as the configuration allows and with increasing
/// delays, until it plays or a client requests something else.
class MainAudio : public QObject
{
    Q_OBJECT

public:
    MainAudio(const PlayerConfiguration &configuration, QObject *parent);

    /// Plays the source from its beginning. If the source is empty, plays the last source, or lets
    /// it go on if it is playing. Returns false if it can't be played; state().error() says why.
    bool play(const QString &source);

    void stop();

    /// From 0.0 to 1.0.
    void setVolume(double volume);

    /// The main audio is ducked while it has a requester. Each requester counts once. False if the
    /// name is too long or there are too many.
    bool duck(const QString &requester);
    void unduck(const QString &requester);

    /// Changes ducking and retries. The device stays.
    void reconfigure(const PlayerConfiguration &configuration);

    TavoPlayerMainAudioState state() const;

Q_SIGNALS:
    /// After each change of state().
    void changed();

private Q_SLOTS:
    void on_music_ended(const QString &source);
    void on_music_failed(const QString &source, const QString &reason);
    void on_retryTimer_timeout();

private:
    bool start();
    void retryLater();
    void forgetRetries();
    bool fail(const QString &reason);
    double gain() const;
    void fadeToGain();

    PlayerConfiguration m_configuration;
    QString m_source;
    QString m_error;
    double m_volume = 1.0;
    QStringList m_requesters;            ///< no duplicates
    UriSimplePlayer *m_player = nullptr; ///< a child; null while nothing plays
    QTimer m_retryTimer;                 ///< starts music again that has failed
    int m_retries = 0;                   ///< since the music last recovered
    QElapsedTimer m_played;              ///< since the music was started
};
