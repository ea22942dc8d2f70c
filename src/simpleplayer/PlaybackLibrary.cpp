// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/PlaybackLibrary.h"

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

namespace {

/// The library's path relative to this one, so that both can be installed anywhere.
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
    // Only the first successful call loads the library. After a failure, such as a lack of file
    // descriptors, the next call tries again.
    void *library = dlopen(file.constData(), RTLD_NOW);
    const void *make = library != nullptr ? dlsym(library, "tavo_make_playback") : nullptr;
    if (make == nullptr) {
        return Failure{QString::fromLocal8Bit(dlerror())};
    }
    return (*static_cast<const MakePlayback *>(make))(sound, options, report);
}
