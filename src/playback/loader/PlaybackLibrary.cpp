// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/loader/PlaybackLibrary.h"

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

namespace {

/// The library's place as seen from this one, wherever both have been installed.
QByteArray libraryFile()
{
    static const char somethingOfThisLibrary = 0;
    Dl_info info = {};
    dladdr(&somethingOfThisLibrary, &info);
    return QFile::encodeName(QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath() +
                             QLatin1String("/" TAVO_PLAYBACK_LIBRARY));
}

} // namespace

Result<std::unique_ptr<Playback>> makePlayback(const PlayedSound &sound,
                                               const PlaybackOptions &options,
                                               const Playback::Report &report)
{
    static const QByteArray file = libraryFile();
    // Only the first call loads anything. A failure isn't kept: what was missing, a file descriptor
    // for instance, may be there the next time.
    void *library = dlopen(file.constData(), RTLD_NOW);
    const void *make = library != nullptr ? dlsym(library, "tavo_make_playback") : nullptr;
    if (make == nullptr) {
        return Failure{QString::fromLocal8Bit(dlerror())};
    }
    return (*static_cast<const MakePlayback *>(make))(sound, options, report);
}
