// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/export.h"

#include <QObject>
#include <QString>

/// Plays one sound once: a player is made for a sound, started, and thrown away when it has ended.
///
/// Thread: everything is called in the thread that the player lives in, which must run a Qt event
/// loop; the signals come from that loop. Owner: its parent. Ids are the caller's own and are only
/// handed back.
///
/// Guarantees, for every kind of player:
/// - exactly one of the three signals is emitted in a player's life;
/// - it is emitted from the event loop, never from inside play(), pause() or stop();
/// - a player that is destroyed is silent at once and reports nothing any more.
class TAVO_SIMPLEPLAYER_EXPORT SimplePlayer : public QObject
{
    Q_OBJECT

public:
    /// Repeats the sound, without a gap, until stopped. Read by the first play().
    bool loop = false;

    /// What the sound is for, as a Usage. Read by the first play().
    int usage = UsageMedia;

    /// How a sound is buffered: media for few wake-ups, a notification to be heard at once.
    enum Usage { UsageMedia = 0, UsageNotification = 1 };

    explicit SimplePlayer(QObject *parent = nullptr);
    ~SimplePlayer() override;

    /// Starts the sound, or lets a paused one go on at the frame that was next to be heard. Waits
    /// for the sound and the device to open, but at most 250 ms, and not for a server or a FIFO's
    /// writer; what fails after that is reported by playbackErrorReported().
    /// Returns false when it can't start, or has ended before; a player that returned false has
    /// said why in the log, may be tried again, and owes its signal only if stop() is called.
    virtual bool play() = 0;

    /// Falls silent, keeps the place and leaves the device to others. Does nothing unless the sound
    /// is playing. Hardware is silent at once. A sound server tells too late what it has played, so
    /// that it plays out what it holds (up to a tenth of a second), which the call waits for.
    virtual void pause() = 0;

    /// Ends the sound; playbackStopped() follows, also for a paused or never started player. Does
    /// nothing once the end has been decided.
    virtual void stop() = 0;

Q_SIGNALS:
    /// The sound has been heard to its end.
    void playbackEnded(const QString &id);

    /// The sound ended because stop() was called.
    void playbackStopped(const QString &id);

    /// The sound broke off; the error is a sentence for people.
    void playbackErrorReported(const QString &id, const QString &error);
};
