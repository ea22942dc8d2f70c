// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/RiffHeader.h"

/// Whether a file that begins as Ogg Vorbis has its headers whole and sound; true for any other.
/// The decoder, when it fails over them, loses the memory that it had made ready: 6 kB a time.
bool hasVorbisHeaders(const ReadAt &readAt, qint64 size);
