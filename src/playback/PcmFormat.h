// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "playback/FrameSource.h"

#include <QString>

#include <optional>

/// How samples are laid out in a raw stream; more than 8 bits name their byte order.
enum class PcmEncoding { U8, S8, S16LE, S16BE, S24LE, S24BE, S32LE, S32BE, F32LE, F32BE };

/// The format of a raw stream.
struct PcmFormat
{
    PcmEncoding encoding = PcmEncoding::S16BE;
    SoundFormat sound;

    int bytesPerSample() const;
    int bytesPerFrame() const { return bytesPerSample() * sound.channels; }
};

/// What a stream's media type asks for.
struct StreamFormat
{
    std::optional<PcmFormat> pcm; ///< raw PCM; without it a sound file, which tells its format
};

/// Reads a media type: audio/L8, L16 or L24 (big-endian) with rate and channels; audio/x-raw with
/// format, rate and channels; or a sound file's type. One channel is taken where none are named.
Result<StreamFormat> parseStreamFormat(const QString &mediaType);

/// Turns raw samples into floats from -1 to 1.
void decodePcm(PcmEncoding encoding, const char *bytes, float *samples, long count);
