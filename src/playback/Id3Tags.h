// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/ReadAt.h"

/// Returns where the ID3v2 tags at the beginning of a file end: 0 if there are none, and the size if they are cut off.
qint64 endOfId3Tags(const ReadAt &readAt, qint64 size);
