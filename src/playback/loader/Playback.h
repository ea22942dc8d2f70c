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

/// What a player is to play, and on which ALSA device.
struct PlayedSound
{
    std::variant<UriSound, DataSound, StreamSound> content;
    QString device;
};

/// The player's members of the same names, as they were at its first play().
struct PlaybackOptions
{
    bool loop = false;
    int usage = 0;
    SimplePlayerLimits limits;
};

/// A sound on its way to a device.
///
/// Runs in the player's thread; owned by the player. Once destroyed it is silent and reports
/// nothing.
class Playback
{
public:
    /// Called from any thread when the sound has ended; with nothing when it was heard to its end.
    using Report = std::function<void(const std::optional<Failure> &failure)>;

    virtual ~Playback() = default;

    /// Begins, or goes on after a pause. Returns why it can't; it reports nothing then. A sound that
    /// was already heard to its end reports that again.
    virtual std::optional<Failure> start() = 0;

    /// Falls silent and keeps the place.
    virtual void pause() = 0;

    /// As SimplePlayer::setGain().
    virtual void setGain(double gain, int fadeMs) = 0;
};
