// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "playback/FrameSource.h"

#include <QString>

#include <optional>

/// The encoding of the samples in a raw stream. Encodings of more than 8 bits include the byte
/// order.
enum class PcmEncoding { U8, S8, S16LE, S16BE, S24LE, S24BE, S32LE, S32BE, F32LE, F32BE };

/// The format of a raw stream.
struct PcmFormat
{
    PcmEncoding encoding = PcmEncoding::S16BE;
    SoundFormat sound;

    int bytesPerSample() const;
    int bytesPerFrame() const { return bytesPerSample() * sound.channels; }
};

/// The format that a media type names: raw PCM, or a sound file, whose header has the details.
struct StreamFormat
{
    std::optional<PcmFormat> pcm; ///< empty for a sound file
};

/// Reads a media type: audio/L8, L16 or L24 (big-endian) with rate and channels; audio/x-raw with
/// format, rate and channels; or a sound file's type. The default is one channel.
Result<StreamFormat> parseStreamFormat(const QString &mediaType);

/// Turns raw samples into floats from -1 to 1.
void decodePcm(PcmEncoding encoding, const char *bytes, float *samples, long count);
