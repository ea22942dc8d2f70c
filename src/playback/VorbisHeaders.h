// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/RiffHeader.h"

/// Returns whether the headers of an Ogg Vorbis file are complete and valid; true for any other
/// file. The decoder leaks 6 kB each time it fails on them.
bool hasVorbisHeaders(const ReadAt &readAt, qint64 size);
