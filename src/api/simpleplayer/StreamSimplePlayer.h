// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/PlaybackPlayer.h"

/// Plays a stream of sound: from a file, a FIFO or an http: URI, in a named media type.
///
/// Thread and owner: as SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT StreamSimplePlayer : public PlaybackPlayer
{
    Q_OBJECT

public:
    /// The format is a media type such as audio/L16;rate=48000;channels=2 for raw PCM, which sounds
    /// as it arrives, or a file format's (audio/flac, ...). The device is an ALSA device's name.
    StreamSimplePlayer(const QString &content, const QString &format, const QString &id,
                       const QString &device, QObject *parent);
};
