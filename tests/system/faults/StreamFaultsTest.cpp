// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"
#include "support/EventLoop.h"

#include <QFile>
#include <QProcess>

#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;

namespace {

constexpr int partMs = 100;

} // namespace

/// A stream from a FIFO with an unreliable writer.
class FifoFaultsTest : public FaultTest
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(mkfifo(fifoName().constData(), 0600), 0);
        start({}, {{"sounds", QJsonObject{{"fifoTimeout", m_fifoTimeoutMs}}}});
    }

    void TearDown() override
    {
        endWriter();
        FaultTest::TearDown();
    }

    QByteArray fifoName() const { return QFile::encodeName(inFolder("stream.fifo")); }

    static QJsonObject withFormat(QJsonObject item, const QString &format)
    {
        item.insert("type", 2);
        item.insert("contentStreamFormat", format);
        return item;
    }
    QJsonObject rawItem(const QString &id) const
    {
        return withFormat(fileItem(id, inFolder("stream.fifo")),
                          "audio/x-raw;format=S16LE;rate=48000;channels=1");
    }

    static QByteArray rawSound(int milliseconds)
    {
        return QByteArray(2 * framesOf(milliseconds), '\1');
    }

    /// Opens the FIFO for reading and writing, so this does not wait for the player.
    void openWriter()
    {
        m_writer = ::open(fifoName().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        ASSERT_GE(m_writer, 0);
    }
    void endWriter()
    {
        if (m_writer >= 0) {
            ::close(m_writer);
        }
        m_writer = -1;
    }
    void feed(const QByteArray &bytes) const
    {
        EXPECT_EQ(::write(m_writer, bytes.constData(), std::size_t(bytes.size())), bytes.size());
    }

    /// A stream that delivers something and then stalls.
    void startStalledStream(const QString &id)
    {
        openWriter();
        feed(rawSound(partMs));
        m_requester.enqueue(rawItem(id));
        ASSERT_TRUE(m_requester.waitFor("started " + id.toStdString()));
        ASSERT_TRUE(waitForFrames(framesOf(partMs)));
    }

    int m_writer = -1;
    int m_fifoTimeoutMs = 60'000;
};

class FifoTimeoutTest : public FifoFaultsTest
{
protected:
    FifoTimeoutTest() { m_fifoTimeoutMs = 300; }
};

TEST_F(FifoFaultsTest, AStalledStreamGoesOnWhenItsWriterDoes)
{
    startStalledStream("stream");
    EXPECT_EQ(m_requester.ends("stream"), 0);
    feed(rawSound(partMs));
    EXPECT_TRUE(waitForFrames(framesOf(2 * partMs)));
    endWriter();
    EXPECT_TRUE(m_requester.waitFor("finished stream"));
    expectAsGoodAsNew();
}

TEST_F(FifoFaultsTest, AStalledStreamTakesNoProcessorTime)
{
    startStalledStream("stream");
    const long before = ProcessState::of(m_host.processId()).processorTicks;
    waitFor([] { return false; }, std::chrono::seconds(1));
    // The player checks a few times a second whether the device is still there.
    constexpr long fewTicks = 5;
    EXPECT_LE(ProcessState::of(m_host.processId()).processorTicks - before, fewTicks);
    EXPECT_EQ(m_requester.ends("stream"), 0);
}

TEST_F(FifoFaultsTest, AStalledStreamIsCancelledAtOnce)
{
    startStalledStream("stream");
    m_requester.cancel("stream");
    EXPECT_EQ(m_requester.answer(), "");
    EXPECT_TRUE(m_requester.waitFor("cancelled stream"));
    endWriter();
    expectAsGoodAsNew();
    EXPECT_THAT(m_requester.responses(), ElementsAre("started stream", "cancelled stream",
                                                     "started afterwards", "finished afterwards"));
}

TEST_F(FifoFaultsTest, AStalledStreamIsPreEmptedByAnUrgentSound)
{
    startStalledStream("stream");
    m_requester.enqueue(fileItem("urgent", soundFile("urgent.wav", partMs), 3));
    EXPECT_TRUE(m_requester.waitFor("finished urgent"));
    feed(rawSound(partMs));
    endWriter();
    EXPECT_TRUE(m_requester.waitFor("finished stream"));
    EXPECT_GE(framesHeard(), framesOf(3 * partMs));
    expectAsGoodAsNew();
}

TEST_F(FifoFaultsTest, AStreamWhoseWriterNeverComesIsCancelled)
{
    m_requester.enqueue(rawItem("stream"));
    ASSERT_TRUE(m_requester.waitFor("started stream"));
    m_requester.cancel("stream");
    EXPECT_EQ(m_requester.answer(), "");
    EXPECT_TRUE(m_requester.waitFor("cancelled stream"));
    EXPECT_EQ(framesHeard(), 0);
    expectAsGoodAsNew();
}

TEST_F(FifoFaultsTest, AStreamWhoseWriterIsKilledFinishesWithWhatCame)
{
    const QString content = m_host.writeFile("part.raw", rawSound(partMs));
    QProcess writer;
    // Writes, then keeps the FIFO open until it is killed.
    writer.start("/bin/sh", {"-c", "exec 3>\"$1\"; cat \"$2\" >&3; exec sleep 60", "writer",
                             inFolder("stream.fifo"), content});
    m_requester.enqueue(rawItem("stream"));
    ASSERT_TRUE(waitForFrames(framesOf(partMs)));
    EXPECT_EQ(m_requester.ends("stream"), 0);
    writer.kill();
    ASSERT_TRUE(writer.waitForFinished());
    EXPECT_TRUE(m_requester.waitFor("finished stream"));
    expectAsGoodAsNew();
}

TEST_F(FifoFaultsTest, ASoundFileWhoseWriterDiesInTheMiddleFails)
{
    const QByteArray file = readFile(soundFile("whole.wav", partMs));
    openWriter();
    feed(file.left(file.size() / 2));
    m_requester.enqueue(withFormat(fileItem("stream", inFolder("stream.fifo")), "audio/wav"));
    ASSERT_TRUE(m_requester.waitFor("started stream"));
    endWriter();
    EXPECT_TRUE(m_requester.waitFor("failed stream"));
    EXPECT_TRUE(m_host.waitForLog("is cut off"));
    EXPECT_EQ(framesHeard(), 0);
    expectAsGoodAsNew();
}

TEST_F(FifoTimeoutTest, AStreamWhoseWriterNeverComesDoesNotBlockTheSoundsBehindIt)
{
    QJsonObject stream = rawItem("stream");
    stream.insert("priority", std::numeric_limits<int>::max());
    m_requester.enqueue(stream);
    m_requester.enqueue(fileItem("urgent", soundFile("urgent.wav", partMs), 3));
    EXPECT_TRUE(m_requester.waitFor("finished urgent"));
    EXPECT_THAT(m_requester.responses(), ElementsAre("started stream", "failed stream",
                                                     "started urgent", "finished urgent"));
    expectAsGoodAsNew();
}
