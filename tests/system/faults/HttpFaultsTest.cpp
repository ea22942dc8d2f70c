// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"
#include "system/sound/HttpServer.h"

#include <QElapsedTimer>

using testing::ElementsAre;

namespace {

constexpr int timeoutMs = 600;

// For a busy machine; without a timeout, a fetch would wait forever.
constexpr int muchLaterMs = timeoutMs + 5000;

constexpr int fetchedMs = 300;

} // namespace

/// Sounds from an unreliable http server.
class HttpFaultsTest : public FaultTest
{
protected:
    void SetUp() override
    {
        start({}, {{"sounds", QJsonObject{{"httpTimeout", timeoutMs}}}});
        // On first use, Qt starts threads for the network, and keeps them.
        m_requester.enqueue(fileItem("first", m_server.serve("first.wav", sound())));
        ASSERT_TRUE(m_requester.waitFor("finished first"));
        ASSERT_TRUE(m_requester.waitForQuiet());
        noteState();
        m_elapsed.start();
    }

    QByteArray sound() { return readFile(soundFile("whole.wav", fetchedMs)); }

    static QJsonObject stream(const QString &id, const QString &uri)
    {
        QJsonObject item = fileItem(id, uri);
        item.insert("type", 2);
        item.insert("contentStreamFormat", "audio/x-raw;format=S16LE;rate=48000;channels=1");
        return item;
    }

    /// Expects that the server got its time, and not much more.
    void expectTimedOut(const QJsonObject &item)
    {
        m_requester.enqueue(item);
        EXPECT_TRUE(m_requester.waitForEnd("sound"));
        EXPECT_EQ(m_requester.count("failed sound"), 1);
        EXPECT_GE(m_elapsed.elapsed(), timeoutMs);
        EXPECT_LT(m_elapsed.elapsed(), muchLaterMs);
        EXPECT_TRUE(m_host.waitForLog("the server is too slow: gave up after 600 ms"));
        expectAsGoodAsNew();
        EXPECT_EQ(m_requester.ends("sound"), 1);
    }

    HttpServer m_server;
    QElapsedTimer m_elapsed;
};

TEST_F(HttpFaultsTest, AServerThatStaysSilentFailsTheSound)
{
    expectTimedOut(fileItem("sound", m_server.silent()));
}

TEST_F(HttpFaultsTest, AServerThatStallsAfterItsHeadersFailsTheSound)
{
    expectTimedOut(fileItem("sound", m_server.stalling("empty.wav", sound(), 0)));
}

TEST_F(HttpFaultsTest, AServerThatStallsInTheMiddleOfAFileFailsTheSound)
{
    expectTimedOut(fileItem("sound", m_server.stalling("half.wav", sound(), sound().size() / 2)));
}

TEST_F(HttpFaultsTest, AServerThatStallsInTheMiddleOfAStreamFailsTheSound)
{
    m_devices.forget();
    const QByteArray bytes(2 * framesOf(fetchedMs), '\1');
    const int half = bytes.size() / 2;
    expectTimedOut(stream("sound", m_server.stalling("half.raw", bytes, half)));
}

TEST_F(HttpFaultsTest, AServerThatClosesTheConnectionFailsTheSoundAtOnce)
{
    m_requester.enqueue(fileItem("sound", m_server.breakingOff("cut.wav", sound())));
    EXPECT_TRUE(m_requester.waitForEnd("sound"));
    EXPECT_EQ(m_requester.count("failed sound"), 1);
    expectAsGoodAsNew();
    EXPECT_EQ(m_requester.ends("sound"), 1);
}

TEST_F(HttpFaultsTest, ASoundThatIsStillFetchedIsCancelledAtOnce)
{
    m_requester.enqueue(fileItem("sound", m_server.stalling("empty.wav", sound(), 0)));
    ASSERT_TRUE(m_requester.waitFor("started sound"));
    m_requester.cancel("sound");
    EXPECT_EQ(m_requester.answer(), "");
    EXPECT_TRUE(m_requester.waitFor("cancelled sound"));
    expectAsGoodAsNew();
    EXPECT_EQ(m_requester.ends("sound"), 1);
}

TEST_F(HttpFaultsTest, ASoundThatIsStillFetchedIsPreEmptedByAnUrgentOne)
{
    m_requester.enqueue(fileItem("sound", m_server.stalling("empty.wav", sound(), 0)));
    ASSERT_TRUE(m_requester.waitFor("started sound"));
    m_requester.enqueue(fileItem("urgent", inFolder("whole.wav"), 3));
    EXPECT_TRUE(m_requester.waitFor("finished urgent"));
    EXPECT_TRUE(m_requester.waitFor("failed sound"));
    expectAsGoodAsNew();
    EXPECT_EQ(m_requester.ends("sound"), 1);
}
