// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QNetworkAccessManager>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <memory>

class QNetworkReply;
class QSocketNotifier;

/// Fetches a URI over http and writes the data to a pipe, no faster than the pipe is read. Does not
/// decompress, and follows redirections only to the same scheme, host and port.
///
/// Runs in the event loop of the player's thread. Owned by the PlaybackWriter.
class HttpFetch
{
public:
    /// What the timeout applies to.
    enum class Kind {
        WholeFile, ///< the whole file
        LiveStream ///< each wait for more data
    };

    /// Called at most once, when the fetch has failed.
    using Report = std::function<void(const Failure &failure)>;

    HttpFetch(const QUrl &url, Kind kind, int timeoutMs);
    ~HttpFetch();
    HttpFetch(const HttpFetch &) = delete;
    HttpFetch &operator=(const HttpFetch &) = delete;

    /// The reading end of the pipe, which the caller then owns. -1 if there are no more
    /// descriptors.
    int takeReadingEnd();

    /// Must not be called if there is no pipe.
    void start(Report report);

private:
    void pass();
    void finish();
    void fail(const QString &why);
    void closePipe();
    bool isRefused() const;

    const QUrl m_url;
    const Kind m_kind;
    const int m_timeoutMs;
    int m_reading = -1;
    int m_writing = -1;
    Report m_report;
    // Made by start(), in the thread in which they live.
    std::unique_ptr<QNetworkAccessManager> m_network;
    QNetworkReply *m_reply = nullptr; // owned by m_network
    std::unique_ptr<QSocketNotifier> m_drained;
    std::unique_ptr<QTimer> m_timer;
};
