// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

class SimplePlayer;

/// What a sounding player hands its calls on to.
///
/// Thread and owner: the player's. Destroyed, it is silent and reports nothing any more.
class Playback
{
public:
    virtual ~Playback() = default;

    /// The player whose signals report the end; set once, before anything else is called.
    virtual void setPlayer(SimplePlayer *player) = 0;

    // As the player's.
    virtual bool play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;
    virtual void setGain(double gain, int fadeMs) = 0;
};
