// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/ReadAt.h"

/// Returns whether an Ogg file begins with the complete headers of Vorbis or Opus, in its first MiB;
/// true for any other file. The decoder leaks 6 kB each time it fails on headers of Vorbis, and
/// searches a file without pages to its end.
bool hasOggHeaders(const ReadAt &readAt, qint64 size);
