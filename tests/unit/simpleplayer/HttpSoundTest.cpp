// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Sounds that come over http.

#include "HttpServer.h"
#include "PlayerTest.h"
#include "support/LogCapture.h"
#include "support/Sanitized.h"
#include <simpleplayer/StreamSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <QElapsedTimer>
#include <QTimer>

#include <gmock/gmock.h>

#include <atomic>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using testing::HasSubstr;
using testing::Not;

namespace {
/// Answers one connection on the loopback with these bytes, again and again, until it is closed.
class EndlessServer
{
public:
    explicit EndlessServer(const std::string &answer)
    {
        m_server.listen(QHostAddress::LocalHost);
        m_server.pauseAccepting(); // the thread accepts
        m_thread = std::thread([this, answer] {
            pollfd client{int(m_server.socketDescriptor()), POLLIN, 0};
            poll(&client, 1, -1);
            const int connection = accept(client.fd, nullptr, nullptr);
            while (::send(connection, answer.data(), answer.size(), MSG_NOSIGNAL) > 0) {
                m_isSending = true;
            }
            ::close(connection);
        });
    }
    ~EndlessServer() { m_thread.join(); }
    EndlessServer(const EndlessServer &) = delete;
    EndlessServer &operator=(const EndlessServer &) = delete;

    QString uri() const
    {
        return QStringLiteral("http://127.0.0.1:%1/sound").arg(m_server.serverPort());
    }
    bool isSending() const { return m_isSending; }

private:
    QTcpServer m_server;
    std::atomic<bool> m_isSending{false};
    std::thread m_thread;
};
} // namespace

class HttpSoundTest : public PlayerTest
{
protected:
    static constexpr const char *rawType = "audio/x-raw;format=S16LE;rate=48000";

    void makeSound(const QString &uri)
    {
        m_player = std::make_unique<UriSimplePlayer>(uri, QStringLiteral("id"),
                                                     QStringLiteral("plain"), nullptr);
        m_end = std::make_unique<EndSpy>(*m_player);
    }

    void makeStream(const char *type)
    {
        m_player = std::make_unique<StreamSimplePlayer>(m_server.uri(), QString::fromLatin1(type),
                                                        QStringLiteral("id"),
                                                        QStringLiteral("plain"), nullptr);
        m_end = std::make_unique<EndSpy>(*m_player);
    }

    void expectError(const std::string &reason)
    {
        ASSERT_TRUE(m_player->play());
        ASSERT_TRUE(m_end->hasEndedOnce());
        EXPECT_THAT(m_end->error(), HasSubstr(reason));
        EXPECT_EQ(heard(), std::vector<float>());
    }

    static QByteArray rawSamples(int from, int to)
    {
        const auto samples = countingSamples(to);
        return QByteArray(reinterpret_cast<const char *>(samples.data() + from),
                          (to - from) * int(sizeof(short)));
    }

    HttpServer m_server;
    std::unique_ptr<SimplePlayer> m_player;
    std::unique_ptr<EndSpy> m_end;
};

TEST_F(HttpSoundTest, PlaysASoundFile)
{
    m_server.serve(readFile(counting()));
    makeSound(m_server.uri());
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1) << m_end->error();
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(HttpSoundTest, PlaysAStreamOfASoundFile)
{
    m_server.serve(readFile(counting()));
    makeStream("audio/wav");
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(HttpSoundTest, PlaysASoundFileThatIsLargerThanItsBuffers)
{
    const auto samples = countingSamples(30000);
    std::vector<short> wide;
    for (int i = 0; i < 8; ++i) {
        wide.insert(wide.end(), samples.begin(), samples.end());
    }
    writeSound(path("wide.wav"), wav, rate, wide, 8);
    m_server.serve(readFile(path("wide.wav")));
    makeSound(m_server.uri());
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), asFloats(wide));
}

TEST_F(HttpSoundTest, FollowsARedirectionWithinItsServer)
{
    m_server.serve(readFile(counting()));
    m_server.serveOnce("HTTP/1.1 302 Found\r\nLocation: /other\r\nContent-Length: 4\r\n\r\nbody");
    makeSound(m_server.uri());
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(HttpSoundTest, FollowsNoRedirectionToAnotherServer)
{
    HttpServer other;
    other.serve(readFile(counting()));
    m_server.serveRaw("HTTP/1.1 302 Found\r\nLocation: " + other.uri().toLatin1() +
                      "\r\nContent-Length: 4\r\n\r\nbody");
    makeSound(m_server.uri());
    expectError("can't be fetched");
    EXPECT_FALSE(other.hasAnswered());
}

TEST_F(HttpSoundTest, UnpacksNoCompression)
{
    constexpr int unpackedBytes = 256 << 20;
    constexpr long maxGrowthKb = 48 << 10;
    constexpr int sizePrefix = 4; // which Qt writes
    const QByteArray packed = qCompress(QByteArray(unpackedBytes, '\0')).mid(sizePrefix);
    m_server.serveRaw("HTTP/1.1 200 OK\r\nContent-Encoding: deflate\r\nContent-Length: " +
                      QByteArray::number(packed.size()) + "\r\n\r\n" + packed);
    makeSound(m_server.uri());
    peakMemoryKb();
    const long before = peakMemoryKb();
    expectError("holds no sound in a known format");
    EXPECT_LT(peakMemoryKb(), before + maxGrowthKb);
}

TEST_F(HttpSoundTest, UsesThePasswordOfAUri)
{
    m_server.serveOnce("HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"r\"\r\n"
                       "Content-Length: 0\r\n\r\n");
    m_server.serve(readFile(counting()));
    makeSound(m_server.uri().replace("http://", "http://user:secret@"));
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
    const QByteArray login = QByteArray("user:secret").toBase64();
    EXPECT_THAT(m_server.request(), HasSubstr("Authorization: Basic " + login.toStdString()));
}

TEST_F(HttpSoundTest, ReportsNoPasswordOfAUri)
{
    m_server.serveRaw("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
    makeSound(m_server.uri().replace("http://", "http://user:secret@"));
    expectError("http://127.0.0.1:");
    EXPECT_THAT(m_end->error(), Not(HasSubstr("secret")));
}

TEST_F(HttpSoundTest, RepeatsASoundFileWithoutFetchingItAgain)
{
    m_server.serve(readFile(counting()));
    makeSound(m_server.uri());
    m_player->loop = true;
    m_player->play();
    ASSERT_TRUE(hasHeard(100));
    m_server.serveRaw("HTTP/1.1 404 Not Found\r\n\r\n");
    ASSERT_TRUE(hasHeard(3 * soundFrames));
    EXPECT_EQ(m_end->count(), 0);
}

TEST_F(HttpSoundTest, DoesNotBlockTheCaller)
{
    makeSound(m_server.uri());
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_TRUE(m_player->play());
    EXPECT_LT(elapsed.elapsed(), 200);
}

TEST_F(HttpSoundTest, ReportsAServerThatCannotBeReached)
{
    QString uri;
    {
        const HttpServer gone;
        uri = gone.uri();
    }
    makeSound(uri);
    expectError("can't be fetched: Connection refused");
}

TEST_F(HttpSoundTest, ReportsASoundThatTheServerDoesNotHave)
{
    m_server.serveRaw("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nnone");
    makeSound(m_server.uri());
    expectError("can't be fetched");
}

TEST_F(HttpSoundTest, ReportsARefusedStreamAndDoesNotPlayTheErrorPage)
{
    const QByteArray page = rawSamples(0, 2000);
    m_server.serveRaw("HTTP/1.1 500 Internal Server Error\r\nContent-Length: " +
                      QByteArray::number(page.size()) + "\r\n\r\n" + page);
    makeStream(rawType);
    expectError("can't be fetched");
}

TEST_F(HttpSoundTest, ReportsAServerThatIsTooSlow)
{
    makeSound(m_server.uri());
    m_player->limits.httpTimeoutMs = 50;
    expectError("the server is too slow");
}

TEST_F(HttpSoundTest, ReportsASoundFileThatArrivesTooSlowly)
{
    m_server.serveRaw("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n");
    makeSound(m_server.uri());
    m_player->limits.httpTimeoutMs = 300;
    QTimer drip;
    QObject::connect(&drip, &QTimer::timeout, [this] {
        if (m_server.hasAnswered()) {
            m_server.send("x");
        }
    });
    drip.start(20);
    expectError("the server is too slow");
}

TEST_F(HttpSoundTest, ReportsASoundFileThatIsTooLarge)
{
    m_server.serve(readFile(counting()));
    makeSound(m_server.uri());
    m_player->limits.httpMaxBytes = 1000;
    expectError("is larger than the 1000 bytes that are allowed");
}

TEST_F(HttpSoundTest, ReportsASoundFileThatIsCutOff)
{
    m_server.serveRaw("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n" +
                      readFile(counting()).left(5000));
    makeSound(m_server.uri());
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(waitFor([this] { return m_server.hasAnswered(); }));
    m_server.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->failed.count(), 1);
}

TEST_F(HttpSoundTest, ReportsDataThatIsNotASound)
{
    m_server.serve("no sound");
    makeSound(m_server.uri());
    expectError("holds no sound in a known format");
}

TEST_F(HttpSoundTest, CanBeStoppedWhileItIsFetched)
{
    makeSound(m_server.uri());
    m_player->play();
    ASSERT_TRUE(waitFor([this] { return m_server.hasAnswered(); }));
    m_player->stop();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->stopped.count(), 1);
}

TEST_F(HttpSoundTest, CanBeDestroyedWhileItIsFetched)
{
    makeSound(m_server.uri());
    m_player->play();
    ASSERT_TRUE(waitFor([this] { return m_server.hasAnswered(); }));
    m_player.reset();
    settle();
    EXPECT_EQ(m_end->count(), 0);
}

TEST_F(HttpSoundTest, CanBeDestroyedWhileItsServerSendsForEver)
{
    constexpr int promptMs = 500;
    for (const std::string &answer :
         {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;" + std::string(60000, 'e'),
          std::string("HTTP/1.1 100 Continue\r\n\r\n"), std::string(60000, 'a')}) {
        const EndlessServer server(answer);
        makeSound(server.uri());
        m_player->play();
        ASSERT_TRUE(waitFor([&] { return server.isSending(); }));
        QElapsedTimer elapsed;
        elapsed.start();
        m_player.reset();
        EXPECT_LT(elapsed.elapsed(), promptMs);
    }
}

TEST_F(HttpSoundTest, ReportsHeadersWithoutEnd)
{
    const EndlessServer server("HTTP/1.1 100 Continue\r\n\r\n");
    makeSound(server.uri());
    expectError("can't be fetched: the server's headers are too long");
}

TEST_F(HttpSoundTest, CanBeDestroyedBeforeItIsFetched)
{
    makeSound(m_server.uri());
    m_player.reset();
    settle();
    EXPECT_FALSE(m_server.hasAnswered());
    EXPECT_EQ(m_end->count(), 0);
}

TEST_F(HttpSoundTest, OfOneHostKeepOutNoneOfAnother)
{
    constexpr int most = 32;
    std::vector<std::unique_ptr<SimplePlayer>> waiting;
    for (int i = 0; i < most; ++i) {
        makeSound(m_server.uri());
        ASSERT_TRUE(m_player->play());
        waiting.push_back(std::move(m_player));
    }
    makeSound(m_server.uri());
    expectError("too many fetches from \"127.0.0.1\" have not ended yet");

    HttpServer other;
    other.serve(readFile(counting()));
    makeSound(other.uri().replace(QStringLiteral("127.0.0.1"), QStringLiteral("localhost")));
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1) << m_end->error();
}

TEST_F(HttpSoundTest, CannotBePlayedWithoutAFileDescriptorForItsPipe)
{
    if (typesAreCheckedThroughAPipe) {
        GTEST_SKIP() << "UBSan needs file descriptors itself";
    }
    makeSound(m_server.uri());
    ASSERT_TRUE(m_player->play()); // loads the library, which needs descriptors too
    makeSound(m_server.uri());
    const LogCapture log("SimplePlayer");
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const int next = dup(STDIN_FILENO);
    close(next);
    const rlimit oneMore{rlim_t(next) + 1, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &oneMore);
    EXPECT_FALSE(m_player->play());
    setrlimit(RLIMIT_NOFILE, &before);
    ASSERT_EQ(log.countAt(log4cplus::ERROR_LOG_LEVEL), 1);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL)[0],
                HasSubstr("can't be fetched: there are no more file descriptors"));
}

TEST_F(HttpSoundTest, GoesOnFetchingAfterAPause)
{
    const QByteArray sound = readFile(counting());
    m_server.serveRaw("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(sound.size()) +
                      "\r\n\r\n" + sound.left(2000));
    makeSound(m_server.uri());
    m_player->play();
    ASSERT_TRUE(waitFor([this] { return m_server.hasAnswered(); }));
    m_player->pause();
    m_player->play();
    m_server.send(sound.mid(2000));
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(HttpSoundTest, PlaysARawStreamAsItArrives)
{
    m_server.serveRaw("HTTP/1.1 200 OK\r\n\r\n" + rawSamples(0, 2000));
    makeStream(rawType);
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    EXPECT_EQ(m_end->count(), 0);
    m_server.send(rawSamples(2000, 4000));
    ASSERT_TRUE(hasHeard(4000));
    m_server.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1) << m_end->error();
    EXPECT_EQ(heard(), countingFloats(4000));
}

TEST_F(HttpSoundTest, EndsARawStreamDespiteTheLoopFlag)
{
    m_server.serveRaw("HTTP/1.1 200 OK\r\n\r\n" + rawSamples(0, 2000));
    makeStream(rawType);
    m_player->loop = true;
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    m_server.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1) << m_end->error();
    EXPECT_EQ(heard(), countingFloats(2000));
}

TEST_F(HttpSoundTest, ReportsAnEncryptingServerThatCannotBeReached)
{
    QString uri;
    {
        const HttpServer gone;
        uri = gone.uri().replace(QLatin1String("http:"), QLatin1String("https:"));
    }
    makeSound(uri);
    expectError("\"https://127.0.0.1:");
}

TEST_F(HttpSoundTest, LosesNothingOfARawStreamDuringAPause)
{
    m_server.serveRaw("HTTP/1.1 200 OK\r\n\r\n" + rawSamples(0, 30000));
    makeStream(rawType);
    m_player->play();
    ASSERT_TRUE(hasHeard(5000));
    m_player->pause();
    settle();
    m_player->play();
    ASSERT_TRUE(hasHeard(30000));
    m_server.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(30000));
}

TEST_F(HttpSoundTest, ReportsARawStreamWithoutData)
{
    m_server.serveRaw("HTTP/1.1 200 OK\r\n\r\n" + rawSamples(0, 100));
    makeStream(rawType);
    m_player->limits.httpTimeoutMs = 100;
    m_player->play();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_THAT(m_end->error(), HasSubstr("the server is too slow"));
}
