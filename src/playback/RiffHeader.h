// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <functional>

/// Reads bytes at an offset of a file. Returns false if there aren't that many.
using ReadAt = std::function<bool(void *target, std::size_t count, qint64 offset)>;

/// How many bytes a WAV file of this size lacks, according to its header. 0 if it is complete, if
/// its length is unknown as in streamed files, or if it is not a WAV file. The decoder would play
/// an incomplete file without an error.
qint64 riffBytesMissing(const ReadAt &readAt, qint64 size);
