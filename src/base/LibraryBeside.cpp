// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/LibraryBeside.h"

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

Result<const void *> symbolOfLibraryBeside(const void *address, const QString &file,
                                           const char *symbol)
{
    Dl_info info = {};
    dladdr(address, &info);
    const QString folder = QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
    void *library =
        dlopen(QFile::encodeName(folder + QLatin1Char('/') + file).constData(), RTLD_NOW);
    const void *found = library != nullptr ? dlsym(library, symbol) : nullptr;
    if (found == nullptr) {
        return Failure{QString::fromLocal8Bit(dlerror())};
    }
    return found;
}
