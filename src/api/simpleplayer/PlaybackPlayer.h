// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

#include <memory>

class Playback;

/// What the sounding kinds share: they differ only in where the sound comes from.
///
/// Thread and owner: as SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT PlaybackPlayer : public SimplePlayer
{
    Q_OBJECT

public:
    ~PlaybackPlayer() override;

    bool play() override;
    void pause() override;
    void stop() override;

    /// Scales the sound: 1.0 as it is, 0.0 silence; values outside are clamped. The change is
    /// spread evenly over fadeMs milliseconds of sound (0: at once), and begins with the next frame
    /// that goes to the device: heard within a tenth of a second. May be called at any time; before
    /// the first play() it is where the sound starts.
    void setGain(double gain, int fadeMs);

protected:
    PlaybackPlayer(std::unique_ptr<Playback> playback, QObject *parent);

private:
    std::unique_ptr<Playback> m_playback;
};
