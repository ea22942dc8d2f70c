// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <functional>

/// Reads bytes at an offset of a file; false when there aren't as many.
using ReadAt = std::function<bool(void *target, std::size_t count, qint64 offset)>;

/// How many bytes of its samples a WAV file of this size lacks by its own account: 0 when it is
/// whole, leaves its length open as streamed files do, or is no WAV file. The decoder would play
/// what there is as if nothing were missing.
qint64 riffBytesMissing(const ReadAt &readAt, qint64 size);
