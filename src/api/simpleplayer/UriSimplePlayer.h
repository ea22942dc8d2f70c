// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

/// Plays the sound file that a URI or a path names. The schemes are file:, http:, and https: where Qt
/// has TLS. What begins with one of these, or with any scheme and "//", is a URI and must be well
/// formed; everything else is a path.
///
/// Thread and owner are as for SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT UriSimplePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    /// Formats: WAV, FLAC, Ogg Vorbis, Opus, MP3. The device is an ALSA device's name.
    UriSimplePlayer(const QString &uri, const QString &id, const QString &device, QObject *parent);
};
