// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/export.h"
#include "simpleplayer/SimplePlayerLimits.h"

#include <QObject>
#include <QString>

#include <memory>

class Playback;
struct PlayedSound;

/// Plays one sound: make a player for it, start it, and delete it when it has ended. The derived
/// classes differ only in the source of the sound.
///
/// Every function is called in the thread that the player lives in, which must run a Qt event loop;
/// the signals come from that loop. Owned by its parent. The caller chooses the id, which is only
/// used in signals and in the log.
///
/// Guarantees, for every kind of player:
/// - it emits exactly one of its signals, once, but none after play() has returned false;
/// - it emits the signal from the event loop, never inside play(), pause() or stop();
/// - destroying it silences it at once, and it emits nothing more.
class TAVO_SIMPLEPLAYER_EXPORT SimplePlayer : public QObject
{
    Q_OBJECT

public:
    /// Repeats the sound without a gap until it is stopped. Read by the first play().
    bool loop = false;

    /// What the sound is for: a Usage. Read by the first play().
    int usage = UsageMedia;

    /// The limits for the sound and its server. Read by the first play().
    SimplePlayerLimits limits = SimplePlayerLimits::defaults();

    /// How the sound is buffered. Media wakes the processor up rarely; a notification is heard at
    /// once.
    enum Usage { UsageMedia = 0, UsageNotification = 1 };

    ~SimplePlayer() override;

    /// Starts the sound, or resumes a paused one at the first frame that has not been heard. Waits
    /// until the sound and the device are open, but at most 250 ms, and never for a server, the
    /// writer of a FIFO, or a file that takes more than 10 ms of processor time to open. Later
    /// failures are reported by playbackErrorReported(). If the sound can't start, logs the reason
    /// and returns false. The player then emits no signal any more, and can't be started again.
    virtual bool play();

    /// Pauses the sound and closes the device. Does nothing unless the sound is playing. Hardware
    /// is silent at once. A sound server reports its position too late, so the call waits until the
    /// server has played all frames that it holds, at most a tenth of a second. If the device
    /// hangs, the call returns after 750 ms; if the file hangs, after 250 ms. The sound can't go on
    /// before they respond.
    virtual void pause();

    /// Ends the sound; playbackStopped() follows, even if the player is paused or was never
    /// started. Does nothing if the sound has ended or has been stopped.
    virtual void stop();

    /// Scales the sound by a gain from 0.0 (silence) to 1.0 (unchanged); other values are clamped.
    /// The change is linear over fadeMs milliseconds of sound (0: at once). It begins with the next
    /// frame that is written to the device, which is heard within a tenth of a second. May be
    /// called at any time; before the first play(), it sets the initial gain.
    void setGain(double gain, int fadeMs);

Q_SIGNALS:
    /// The sound has been played to its end.
    void playbackEnded(const QString &id);

    /// The sound ended because stop() was called.
    void playbackStopped(const QString &id);

    /// The sound failed; the error is a sentence for people.
    void playbackErrorReported(const QString &id, const QString &error);

protected:
    /// If the sound is null, the player is a FakePlayer.
    SimplePlayer(const QString &id, std::unique_ptr<const PlayedSound> sound, QObject *parent);

private:
    enum class State { Ready, Playing, Paused, Stopping, Over };

    bool prepare();
    bool start();
    bool refuse(const QString &reason);
    void reportEnd();
    void reportError(const QString &error);
    void end(State state);

    const QString m_id;
    const std::unique_ptr<const PlayedSound> m_sound;
    State m_state = State::Ready;
    double m_startGain = 1.0;
    std::unique_ptr<Playback> m_playback; // from the first play() until the end
};
