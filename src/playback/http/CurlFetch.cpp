// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/HttpFetch.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <curl/curl.h>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

constexpr int maxRedirects = 5;
constexpr long firstRedirection = 300;
constexpr long firstError = 400;

// Of all responses of a fetch. A server could send headers for ever.
constexpr std::size_t maxHeaderBytes = 256 << 10;

// Each that looks up its host may keep its thread for half a minute after its end.
constexpr int maxThreadsOfHost = 32;

/// How many threads run for each host, so that one whose name is looked up slowly keeps out no sound of another.
class ThreadCount
{
public:
    /// Returns false if there are too many already.
    bool add(const QString &host)
    {
        const std::lock_guard lock(m_mutex);
        int &count = m_counts[host];
        if (count == maxThreadsOfHost) {
            return false;
        }
        ++count;
        return true;
    }

    void remove(const QString &host)
    {
        const std::lock_guard lock(m_mutex);
        if (--m_counts[host] == 0) {
            m_counts.erase(host);
        }
    }

private:
    std::mutex m_mutex;
    std::map<QString, int> m_counts; // guarded by the mutex
};

/// Never destroyed, because threads may still run when the process ends.
ThreadCount &threadCount()
{
    static auto &count = *new ThreadCount;
    return count;
}

bool isOfSameServer(const QUrl &one, const QUrl &other)
{
    const auto portOf = [](const QUrl &url) {
        return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
    };
    return one.scheme() == other.scheme() && one.host() == other.host() &&
           portOf(one) == portOf(other);
}

/// Runs in a thread of its own, because a server may keep the thread busy, and looking up a host can't be interrupted.
class Transfer
{
public:
    using Kind = HttpFetch::Kind;
    using Report = HttpFetch::Report;

    Transfer(QUrl url, Kind kind, int timeoutMs, int writing);
    ~Transfer();
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;

    void setReport(Report report) { m_report = std::move(report); }
    void run();

    /// Called in another thread. Nothing is reported afterwards.
    void stop();

    void fail(const QString &why);

private:
    using Clock = std::chrono::steady_clock;

    void setOptions();

    /// Returns why the fetch has failed.
    std::optional<QString> fetch();

    /// Follows no redirection.
    std::optional<QString> fetch(const QUrl &url);
    std::optional<QString> waitForMore();
    void waitForRoom();
    QString reasonOf(CURLcode result);
    long status();
    void restartTimeout();

    /// Writes what has been received to the pipe. Returns false if the pipe is full.
    bool flush();

    // Called by the library.
    static std::size_t onHeader(char *bytes, std::size_t size, std::size_t count, void *self);
    static std::size_t onBody(char *bytes, std::size_t size, std::size_t count, void *self);

    const QUrl m_url;
    const Kind m_kind;
    const int m_timeoutMs;
    int m_writing;
    CURLM *const m_multi;
    CURL *const m_easy;
    Clock::time_point m_deadline{};
    std::size_t m_headerBytes = 0;
    std::string m_received; // and not written yet
    bool m_isPaused = false;
    std::atomic<bool> m_isStopped{false};
    std::mutex m_mutex;
    Report m_report; // guarded by the mutex
};

Transfer::Transfer(QUrl url, Kind kind, int timeoutMs, int writing)
    : m_url(std::move(url))
    , m_kind(kind)
    , m_timeoutMs(timeoutMs)
    , m_writing(writing)
    , m_multi(writing < 0 ? nullptr : curl_multi_init()) // it takes descriptors
    , m_easy(curl_easy_init())
{
}

Transfer::~Transfer()
{
    curl_easy_cleanup(m_easy);
    curl_multi_cleanup(m_multi);
    if (m_writing >= 0) {
        ::close(m_writing);
    }
}

void Transfer::run()
{
    // The reader may close the pipe at any time.
    sigset_t brokenPipe{};
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);

    if (const auto why = fetch()) {
        // The pipe stays open, because the reader would mistake a closed pipe for the end of the sound.
        return fail(*why);
    }
    waitForRoom();
    ::close(std::exchange(m_writing, -1));
}

void Transfer::fail(const QString &why)
{
    const std::lock_guard lock(m_mutex);
    if (m_report) {
        m_report({QStringLiteral("\"%1\" can't be fetched: %2").arg(m_url.toDisplayString(), why)});
    }
}

void Transfer::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_report = nullptr;
    }
    m_isStopped = true;
    curl_multi_wakeup(m_multi);
}

void Transfer::setOptions()
{
    curl_easy_setopt(m_easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(m_easy, CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST);
    curl_easy_setopt(m_easy, CURLOPT_PROXY, ""); // whatever the environment says
    curl_easy_setopt(m_easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(m_easy, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(m_easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, this);
}

std::optional<QString> Transfer::fetch()
{
    if (m_multi == nullptr || m_easy == nullptr) {
        return QStringLiteral("there is not enough memory");
    }
    setOptions();
    restartTimeout();
    QUrl url = m_url;
    for (int redirects = 0;; ++redirects) {
        if (auto why = fetch(url)) {
            return why;
        }
        if (status() < firstRedirection) {
            return std::nullopt;
        }
        const char *target = nullptr;
        curl_easy_getinfo(m_easy, CURLINFO_REDIRECT_URL, &target);
        if (status() >= firstError || target == nullptr) {
            return QStringLiteral("the server answers with the status %1").arg(status());
        }
        url = QUrl(QString::fromUtf8(target));
        // Allowing a server does not allow the servers that it redirects to.
        if (!isOfSameServer(url, m_url)) {
            return QStringLiteral("the server redirects to another one");
        }
        if (redirects == maxRedirects) {
            return QStringLiteral("the server redirects too often");
        }
        url.setUserInfo(m_url.userInfo());
    }
}

std::optional<QString> Transfer::fetch(const QUrl &url)
{
    curl_easy_setopt(m_easy, CURLOPT_URL, url.toEncoded().constData());
    curl_multi_add_handle(m_multi, m_easy);
    std::optional<QString> why;
    for (int running = 1; running != 0 && !why && !m_isStopped;) {
        curl_multi_perform(m_multi, &running);
        int left = 0;
        const CURLMsg *message = curl_multi_info_read(m_multi, &left);
        if (message != nullptr && message->data.result != CURLE_OK) {
            why = reasonOf(message->data.result);
        } else if (running != 0) {
            why = waitForMore();
        }
    }
    curl_multi_remove_handle(m_multi, m_easy);
    return why;
}

std::optional<QString> Transfer::waitForMore()
{
    if (m_isPaused) {
        // The reader is slow (a paused player), not the server.
        waitForRoom();
        restartTimeout();
        m_isPaused = false;
        curl_easy_pause(m_easy, CURLPAUSE_CONT);
        return std::nullopt;
    }
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now()).count();
    if (left < 0) {
        return QStringLiteral("the server is too slow: gave up after %1 ms").arg(m_timeoutMs);
    }
    curl_multi_poll(m_multi, nullptr, 0, int(left) + 1, nullptr);
    return std::nullopt;
}

void Transfer::waitForRoom()
{
    constexpr int maxMs = 60000;
    while (!m_isStopped && !flush()) {
        curl_waitfd pipe{m_writing, CURL_WAIT_POLLOUT, 0};
        curl_multi_poll(m_multi, &pipe, 1, maxMs, nullptr);
    }
}

bool Transfer::flush()
{
    while (!m_received.empty()) {
        const ssize_t written = write(m_writing, m_received.data(), m_received.size());
        if (written < 0 && errno == EAGAIN) {
            return false;
        }
        if (written <= 0) {
            m_isStopped = true; // nobody reads any more
            return true;
        }
        m_received.erase(0, std::size_t(written));
    }
    return true;
}

QString Transfer::reasonOf(CURLcode result)
{
    long number = 0;
    if (result == CURLE_COULDNT_CONNECT &&
        curl_easy_getinfo(m_easy, CURLINFO_OS_ERRNO, &number) == CURLE_OK && number != 0) {
        return qt_error_string(int(number));
    }
    if (m_headerBytes > maxHeaderBytes) {
        return QStringLiteral("the server's headers are too long");
    }
    return QString::fromUtf8(curl_easy_strerror(result));
}

long Transfer::status()
{
    long status = 0;
    curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &status);
    return status;
}

void Transfer::restartTimeout()
{
    m_deadline = Clock::now() + std::chrono::milliseconds(m_timeoutMs);
}

std::size_t Transfer::onHeader(char * /*bytes*/, std::size_t size, std::size_t count, void *self)
{
    auto &transfer = *static_cast<Transfer *>(self);
    transfer.m_headerBytes += size * count;
    return transfer.m_headerBytes > maxHeaderBytes ? 0 : size * count;
}

std::size_t Transfer::onBody(char *bytes, std::size_t size, std::size_t count, void *self)
{
    auto &transfer = *static_cast<Transfer *>(self);
    if (transfer.status() >= firstRedirection) {
        return size * count; // the page of an error
    }
    if (!transfer.flush()) {
        transfer.m_isPaused = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    transfer.m_received.assign(bytes, size * count);
    transfer.flush();
    if (transfer.m_kind == Kind::LiveStream) {
        transfer.restartTimeout();
    }
    return size * count;
}

class CurlFetch : public HttpFetch
{
public:
    CurlFetch(const QUrl &url, Kind kind, int timeoutMs)
        : m_host(url.host())
    {
        std::array<int, 2> ends{-1, -1};
        if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
            m_reading = ends[0];
        }
        m_transfer = std::make_shared<Transfer>(url, kind, timeoutMs, ends[1]);
    }

    ~CurlFetch() override
    {
        m_transfer->stop();
        if (m_reading >= 0) {
            ::close(m_reading);
        }
    }

    int takeReadingEnd() override { return std::exchange(m_reading, -1); }

    void start(Report report) override
    {
        m_transfer->setReport(std::move(report));
        if (!threadCount().add(m_host)) {
            m_transfer->fail(
                QStringLiteral("too many fetches from \"%1\" have not ended yet").arg(m_host));
            return;
        }
        try {
            std::thread([transfer = m_transfer, host = m_host] {
                transfer->run();
                threadCount().remove(host);
            }).detach();
        } catch (const std::system_error &error) {
            threadCount().remove(m_host);
            m_transfer->fail(QStringLiteral("no thread can be started: ") + error.what());
        }
    }

private:
    const QString m_host;
    int m_reading = -1;
    std::shared_ptr<Transfer> m_transfer; // outlives the fetch until its thread has ended
};

std::unique_ptr<HttpFetch> makeCurlFetch(const QUrl &url, HttpFetch::Kind kind, int timeoutMs)
{
    return std::make_unique<CurlFetch>(url, kind, timeoutMs);
}

} // namespace

const MakeHttpFetch tavo_make_http_fetch = &makeCurlFetch;
