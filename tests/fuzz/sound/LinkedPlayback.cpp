// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Replaces the loader of the playback library, which is linked into the fuzzer.

#include <simpleplayer/PlaybackLibrary.h>

Result<std::unique_ptr<Playback>> makePlayback(const PlayedSound &sound,
                                               const PlaybackOptions &options,
                                               const Playback::Report &report)
{
    return tavo_make_playback(sound, options, report);
}
