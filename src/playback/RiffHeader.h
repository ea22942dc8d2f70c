// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/ReadAt.h"

#include <QString>

#include <optional>

/// Checks the header of a WAV file of this size. Returns what is wrong with it: the end of the file
/// is missing, or there are too many chunks before the samples. The decoder would play an incomplete
/// file without an error. Accepts files of unknown length, as streams leave them, and files that are
/// not WAV.
std::optional<QString> riffDefect(const ReadAt &readAt, qint64 size);
