// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "playback/ReadAt.h"

#include <QtGlobal>

#include <optional>

/// Checks the header of a WAV file of this size. Fails if the end of the file is missing, or there are
/// too many chunks before the samples: the decoder would play an incomplete file without an error.
///
/// Programs that write to a pipe don't know the length, and leave 0 or one near the largest. Then the samples
/// go on to the end of the file. The decoder knows this of all these lengths but 0, which it takes for
/// the length: for that one, returns the offset of the field with the length of the samples.
///
/// Accepts files that are not WAV.
Result<std::optional<qint64>> checkRiff(const ReadAt &readAt, qint64 size);
