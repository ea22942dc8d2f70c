// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

/// Plays the sound file that a URI names: file: and http: URIs (https: where Qt has TLS), or a bare
/// path.
///
/// Thread and owner: as SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT UriSimplePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    /// Formats: WAV, FLAC, Ogg Vorbis, Opus, MP3. The device is an ALSA device's name.
    UriSimplePlayer(const QString &uri, const QString &id, const QString &device, QObject *parent);
};
