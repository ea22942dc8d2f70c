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

/// Plays one sound once: a player is made for a sound, started, and thrown away when it has ended.
/// The kinds of players differ only in where the sound comes from.
///
/// Thread: everything is called in the thread that the player lives in, which must run a Qt event
/// loop; the signals come from that loop. Owned by its parent. Ids are the caller's own and are only
/// handed back.
///
/// Guarantees, for every kind of player:
/// - exactly one of the three signals is emitted in a player's life, but for one whose play()
///   returned false: it is over, and reports no end afterwards;
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

    /// What the player accepts from its sound or a server. Read by the first play().
    SimplePlayerLimits limits = SimplePlayerLimits::defaults();

    /// How a sound is buffered: media for few wake-ups, a notification to be heard at once.
    enum Usage { UsageMedia = 0, UsageNotification = 1 };

    ~SimplePlayer() override;

    /// Starts the sound, or lets a paused one go on at the frame that was next to be heard. Waits
    /// for the sound and the device to open, but at most 250 ms, and not for a server or a FIFO's
    /// writer; what fails after that is reported by playbackErrorReported().
    /// Returns false when it can't start, and says why in the log. The player is over then, as after
    /// its end: it reports no end afterwards, whatever is called, and can't be started any more.
    virtual bool play();

    /// Falls silent, keeps the place and leaves the device to others. Does nothing unless the sound
    /// is playing. Hardware is silent at once. A sound server tells too late what it has played, so
    /// it plays out what it holds (up to a tenth of a second), and the call waits for that.
    virtual void pause();

    /// Ends the sound; playbackStopped() follows, also for a player that is paused or was never
    /// started. Does nothing once the player is over or its end has been decided.
    virtual void stop();

    /// Scales the sound: 1.0 as it is, 0.0 silence; values outside are clamped. The change is
    /// spread evenly over fadeMs milliseconds of sound (0: at once), and begins with the next frame
    /// that goes to the device: heard within a tenth of a second. May be called at any time; before
    /// the first play() it is where the sound starts.
    void setGain(double gain, int fadeMs);

Q_SIGNALS:
    /// The sound has been heard to its end.
    void playbackEnded(const QString &id);

    /// The sound ended because stop() was called.
    void playbackStopped(const QString &id);

    /// The sound broke off; the error is a sentence for people.
    void playbackErrorReported(const QString &id, const QString &error);

protected:
    /// Without a sound it plays silence of no length.
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
