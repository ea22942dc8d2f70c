// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/PlaybackLibrary.h"

#include "base/LibraryBeside.h"

#include <dlfcn.h>

Result<std::unique_ptr<Playback>> makePlayback(const PlayedSound &sound,
                                               const PlaybackOptions &options,
                                               const Playback::Report &report)
{
    static const char somethingOfThisLibrary = 0;
    const void *make = symbolOfLibraryBeside(
        &somethingOfThisLibrary, QStringLiteral(TAVO_PLAYBACK_LIBRARY), "tavo_make_playback");
    if (make == nullptr) {
        return Failure{QString::fromLocal8Bit(dlerror())};
    }
    return (*static_cast<const MakePlayback *>(make))(sound, options, report);
}
