// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/LibraryBeside.h"
#include "playback/HttpFetch.h"

Result<std::unique_ptr<HttpFetch>> makeHttpFetch(const QUrl &url, HttpFetch::Kind kind,
                                                 int timeoutMs)
{
    static const char somethingOfThisLibrary = 0;
    const auto make = symbolOfLibraryBeside(
        &somethingOfThisLibrary, QStringLiteral("libtavo_http.so"), "tavo_make_http_fetch");
    if (const auto *failure = std::get_if<Failure>(&make)) {
        return *failure;
    }
    return (*static_cast<const MakeHttpFetch *>(std::get<const void *>(make)))(url, kind,
                                                                               timeoutMs);
}
