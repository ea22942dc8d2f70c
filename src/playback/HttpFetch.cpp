// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/HttpFetch.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr qint64 bufferBytes = 65536;
constexpr int maxRedirects = 5;
constexpr int firstRefusal = 300;

} // namespace

HttpFetch::HttpFetch(const QUrl &url, Kind kind, int timeoutMs)
    : m_url(url)
    , m_kind(kind)
    , m_timeoutMs(timeoutMs)
{
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
        m_reading = ends[0];
        m_writing = ends[1];
    }
}

HttpFetch::~HttpFetch()
{
    // Aborting emits the signals of the reply, but nothing must be reported any more.
    if (m_reply) {
        m_reply->disconnect();
    }
    closePipe();
    if (m_reading >= 0) {
        ::close(m_reading);
    }
}

int HttpFetch::takeReadingEnd()
{
    return std::exchange(m_reading, -1);
}

void HttpFetch::start(Report report)
{
    m_report = std::move(report);
    m_network = std::make_unique<QNetworkAccessManager>();
    m_drained = std::make_unique<QSocketNotifier>(m_writing, QSocketNotifier::Write);
    m_drained->setEnabled(false);
    m_timer = std::make_unique<QTimer>();
    m_timer->setSingleShot(true);
    // A coarse timer may be early, but the server must get all of its time.
    m_timer->setTimerType(Qt::PreciseTimer);

    QNetworkRequest request(m_url);
    // Allowing a server does not allow the servers that it redirects to.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::SameOriginRedirectPolicy);
    // Set here, so that Qt does not decompress: a small response could unpack to a thousand times
    // its size.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setMaximumRedirectsAllowed(maxRedirects);
    m_reply = m_network->get(request);
    m_reply->setReadBufferSize(bufferBytes);
    QObject::connect(m_reply, &QNetworkReply::readyRead, m_timer.get(), [this] { pass(); });
    QObject::connect(m_reply, &QNetworkReply::finished, m_timer.get(), [this] { pass(); });
    QObject::connect(m_drained.get(), &QSocketNotifier::activated, m_timer.get(),
                     [this] { pass(); });
    QObject::connect(m_timer.get(), &QTimer::timeout, m_timer.get(), [this] {
        fail(QStringLiteral("the server is too slow: gave up after %1 ms").arg(m_timeoutMs));
    });
    m_timer->start(m_timeoutMs);
}

bool HttpFetch::isRefused() const
{
    return m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() >= firstRefusal;
}

// Moves the received data into the pipe until the pipe is full. Then the reader is slow (a paused
// player), not the server, so the timeout is stopped.
void HttpFetch::pass()
{
    if (m_writing < 0) {
        return;
    }
    if (isRefused()) {
        return m_reply->isFinished() ? finish() : void();
    }
    m_drained->setEnabled(false);
    while (m_reply->bytesAvailable() > 0) {
        const QByteArray bytes = m_reply->peek(bufferBytes);
        const ssize_t written = write(m_writing, bytes.constData(), std::size_t(bytes.size()));
        if (written <= 0) {
            if (written < 0 && errno != EAGAIN) {
                return closePipe();
            }
            m_drained->setEnabled(true);
            return m_timer->stop();
        }
        m_reply->skip(written);
        if (m_kind == Kind::LiveStream) {
            m_timer->start(m_timeoutMs);
        }
    }
    if (!m_timer->isActive()) {
        m_timer->start(m_timeoutMs);
    }
    if (m_reply->isFinished()) {
        finish();
    }
}

void HttpFetch::finish()
{
    if (m_reply->error() != QNetworkReply::NoError) {
        return fail(m_reply->errorString());
    }
    closePipe();
}

void HttpFetch::fail(const QString &why)
{
    m_reply->disconnect();
    m_reply->abort();
    m_timer->stop();
    // The pipe stays open, because the reader would mistake a closed pipe for the end of the sound.
    if (m_report) {
        std::exchange(m_report, nullptr)(
            {QStringLiteral("\"%1\" can't be fetched: %2").arg(m_url.toDisplayString(), why)});
    }
}

void HttpFetch::closePipe()
{
    if (m_drained) {
        m_drained->setEnabled(false);
    }
    if (m_timer) {
        m_timer->stop();
    }
    if (m_writing >= 0) {
        ::close(m_writing);
    }
    m_writing = -1;
}
