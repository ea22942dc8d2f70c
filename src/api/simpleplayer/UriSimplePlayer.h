// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

/// Plays the sound file at a URI or a path. The schemes are file:, http:, and https: if Qt has TLS.
/// A name that begins with one of these, or with any scheme and "//", is a URI and must be well
/// formed; every other name is a path.
///
/// Thread and owner: as SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT UriSimplePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    /// Formats: WAV, FLAC, Ogg Vorbis, Opus, MP3. The device is the name of an ALSA device.
    UriSimplePlayer(const QString &uri, const QString &id, const QString &device, QObject *parent);
};
