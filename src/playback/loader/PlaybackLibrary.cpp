// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/loader/MissingPlayback.h"
#include "playback/loader/PlaybackMaker.h"

#include <atomic>

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

namespace {

/// The library's place as seen from this one, wherever both have been installed.
QString libraryFile()
{
    static const char somethingOfThisLibrary = 0;
    Dl_info info = {};
    dladdr(&somethingOfThisLibrary, &info);
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath() +
           QLatin1String("/" TAVO_PLAYBACK_LIBRARY);
}

const PlaybackMaker *load()
{
    // Stays loaded until the process ends, as modules do.
    void *library = dlopen(QFile::encodeName(libraryFile()).constData(), RTLD_NOW);
    void *entry = library != nullptr ? dlsym(library, "tavo_playback_maker") : nullptr;
    return entry != nullptr ? reinterpret_cast<decltype(&tavo_playback_maker)>(entry)() : nullptr;
}

} // namespace

std::unique_ptr<Playback> makePlayback(const QString &id, const PlaybackWish &wish)
{
    // A failure is not kept: what was missing, a file descriptor for instance, may be there later.
    static std::atomic<const PlaybackMaker *> loaded{nullptr};
    const PlaybackMaker *maker = loaded;
    if (maker == nullptr) {
        maker = load();
        if (maker == nullptr)
            return std::make_unique<MissingPlayback>(id, QString::fromLocal8Bit(dlerror()));
        loaded = maker;
    }
    return wish(*maker);
}
