// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/ReadAt.h"

/// Returns false for an Ogg file whose first MiB does not hold complete Vorbis or Opus headers, and
/// true for every other file. The decoder must not see such a file: it leaks 6 kB when Vorbis
/// headers are broken, and reads the whole file when it finds no pages. Unusual codebooks and numbers of streams count as broken.
bool hasOggHeaders(const ReadAt &readAt, qint64 size);
