// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "simpleplayer/SimplePlayerLimits.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <variant>

struct UriSound
{
    QString uri;
};

struct DataSound
{
    QByteArray data;
};

struct StreamSound
{
    QString content;
    QString format;
};

/// The sound of a player, and the ALSA device for it.
struct PlayedSound
{
    std::variant<UriSound, DataSound, StreamSound> content;
    QString device;
};

/// The values of the player's members of the same names at its first play().
struct PlaybackOptions
{
    bool loop = false;
    int usage = 0;
    SimplePlayerLimits limits;
};

/// Plays a sound on a device.
///
/// Used in the player's thread; owned by the player. Once it is destroyed, it is silent and reports
/// nothing.
class Playback
{
public:
    /// Called from any thread when the sound has ended; without a failure if it was played to its
    /// end.
    using Report = std::function<void(const std::optional<Failure> &failure)>;

    virtual ~Playback() = default;

    /// Starts the sound, or resumes it after a pause. Returns the reason if it fails, and then
    /// reports nothing. If the sound has been played to its end already, reports the end again.
    virtual std::optional<Failure> start() = 0;

    /// Pauses the sound.
    virtual void pause() = 0;

    /// As SimplePlayer::setGain().
    virtual void setGain(double gain, int fadeMs) = 0;
};
