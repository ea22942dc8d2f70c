// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/PlaybackLibrary.h"

#include "base/LibraryBeside.h"

Result<std::unique_ptr<Playback>> makePlayback(const PlayedSound &sound,
                                               const PlaybackOptions &options,
                                               const Playback::Report &report)
{
    static const char somethingOfThisLibrary = 0;
    const auto make = symbolOfLibraryBeside(
        &somethingOfThisLibrary, QStringLiteral(TAVO_PLAYBACK_LIBRARY), "tavo_make_playback");
    if (const auto *failure = std::get_if<Failure>(&make)) {
        return *failure;
    }
    return (*static_cast<const MakePlayback *>(std::get<const void *>(make)))(sound, options,
                                                                              report);
}
