// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QUrl>

#include <functional>
#include <memory>

/// Fetches a URI over http and writes the data to a pipe, no faster than the pipe is read. Does not
/// decompress, and follows redirections only to the same scheme, host and port.
///
/// Used in the player's thread, which never waits for it. Owned by the PlaybackWriter.
class HttpFetch
{
public:
    /// What the timeout applies to.
    enum class Kind {
        WholeFile, ///< the whole file
        LiveStream ///< each wait for more data
    };

    /// Called at most once, when the fetch has failed, in another thread. Not called once the fetch is destroyed.
    using Report = std::function<void(const Failure &failure)>;

    HttpFetch() = default;
    virtual ~HttpFetch() = default;
    HttpFetch(const HttpFetch &) = delete;
    HttpFetch &operator=(const HttpFetch &) = delete;

    /// The reading end of the pipe, which the caller then owns. -1 if there are no more
    /// descriptors.
    virtual int takeReadingEnd() = 0;

    /// Must not be called if there is no pipe.
    virtual void start(Report report) = 0;
};

/// Makes a fetch with libtavo_http, which is loaded by the first call and never unloaded: its some twenty libraries take
/// 7 ms and 4 MiB. Fails if the library is missing.
Result<std::unique_ptr<HttpFetch>> makeHttpFetch(const QUrl &url, HttpFetch::Kind kind,
                                                 int timeoutMs);

using MakeHttpFetch = std::unique_ptr<HttpFetch> (*)(const QUrl &url, HttpFetch::Kind kind,
                                                     int timeoutMs);

/// The library's entry point.
extern "C" Q_DECL_EXPORT const MakeHttpFetch tavo_make_http_fetch;
