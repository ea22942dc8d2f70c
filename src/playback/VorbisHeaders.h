// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/RiffHeader.h"

/// Whether the headers of an Ogg Vorbis file are complete and valid; true for any other file. When
/// the decoder fails on them it leaks memory, 6 kB each time.
bool hasVorbisHeaders(const ReadAt &readAt, qint64 size);
