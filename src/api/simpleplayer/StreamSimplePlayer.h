// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

/// Plays a stream of sound: from a file, a FIFO or an http: URI, in a named media type.
///
/// Thread and owner are as for SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT StreamSimplePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    /// The content is a path or a URI, as UriSimplePlayer's. The device is an ALSA device's name. The
    /// format is a media type:
    /// - audio/L8, audio/L16, audio/L24 with rate and channels: raw PCM, big-endian, as in
    ///   audio/L16;rate=48000;channels=2
    /// - audio/x-raw with format, rate and channels: raw PCM in the format U8, S8, S16LE, S16BE,
    ///   S24LE, S24BE (three bytes), S32LE, S32BE, F32LE or F32BE
    /// - that of a sound file (audio/wav, audio/flac, audio/ogg, audio/opus, audio/mpeg, ...), which
    ///   is decoded as what it turns out to be.
    /// Without channels it is mono. Raw PCM sounds as it arrives; a sound file that
    /// comes through a FIFO or over http is collected first.
    ///
    /// A FIFO is waited for until somebody writes, and ends when the last writer closes it; with
    /// loop it waits for the next writer. A raw stream over http can't be repeated and ends with
    /// its server, whatever loop says.
    StreamSimplePlayer(const QString &content, const QString &format, const QString &id,
                       const QString &device, QObject *parent);
};
