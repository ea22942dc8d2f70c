// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "playback/ReadAt.h"

#include <QByteArray>

#include <optional>

/// The samples of a WAV file, and a header of nothing but their format. The decoder reads every chunk of a file, and some
/// bytes of them can keep it busy for minutes.
struct WavSamples
{
    QByteArray header;
    qint64 offset; ///< of the samples in the file
    qint64 bytes;
};

/// Finds the samples of a WAV file of this size; nothing if it is none. Fails if the end of the file is missing, which
/// the decoder would not notice, or there is no format or too many chunks before the samples.
///
/// Programs that write to a pipe don't know the length, and leave 0 or one near the largest. Then the samples
/// go on to the end of the file.
Result<std::optional<WavSamples>> findWavSamples(const ReadAt &readAt, qint64 size);
