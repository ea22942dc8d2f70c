// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

/// Plays a stream of a given media type from a file, a FIFO or an http: URI.
///
/// Thread and owner: as SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT StreamSimplePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    /// The content is a path or a URI, as for UriSimplePlayer. The device is the name of an ALSA
    /// device. The format is a media type:
    /// - audio/L8, audio/L16, audio/L24 with rate and channels: raw PCM, big-endian, as in
    ///   audio/L16;rate=48000;channels=2
    /// - audio/x-raw with format, rate and channels: raw PCM in the format U8, S8, S16LE, S16BE,
    ///   S24LE, S24BE (three bytes), S32LE, S32BE, F32LE or F32BE
    /// - the type of a sound file (audio/wav, audio/flac, audio/ogg, audio/opus, audio/mpeg, ...);
    ///   the decoder detects the actual type.
    /// The default is one channel. Raw PCM is played as it arrives; a sound file from a FIFO or over
    /// http is collected first.
    ///
    /// The player waits until a FIFO is opened for writing, but no longer than
    /// SimplePlayerLimits::fifoTimeoutMs without data. The sound ends when the last writer closes the
    /// FIFO; with loop, the player waits for the next writer. A raw stream over http can't
    /// be repeated: it ends when the server ends it, even with loop.
    StreamSimplePlayer(const QString &content, const QString &format, const QString &id,
                       const QString &device, QObject *parent);
};
