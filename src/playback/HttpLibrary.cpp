// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/LibraryBeside.h"
#include "playback/HttpFetch.h"

#include <dlfcn.h>

Result<std::unique_ptr<HttpFetch>> makeHttpFetch(const QUrl &url, HttpFetch::Kind kind,
                                                 int timeoutMs)
{
    static const char somethingOfThisLibrary = 0;
    const void *make = symbolOfLibraryBeside(
        &somethingOfThisLibrary, QStringLiteral("libtavo_http.so"), "tavo_make_http_fetch");
    if (make == nullptr) {
        return Failure{QString::fromLocal8Bit(dlerror())};
    }
    return (*static_cast<const MakeHttpFetch *>(make))(url, kind, timeoutMs);
}
