// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// In place of the one that loads a library: here all is one.

#include <playback/loader/PlaybackMaker.h>

std::unique_ptr<Playback> makePlayback(const QString & /*id*/, const PlaybackWish &wish)
{
    return wish(*tavo_playback_maker());
}
