// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Streams from files and FIFOs, and their formats.

#include "PlayerTest.h"
#include "support/LogCapture.h"
#include <simpleplayer/StreamSimplePlayer.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <QUrl>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::HasSubstr;

namespace {

// The values 1, -1/2 and 1/4 of full scale in an encoding.
struct Encoding
{
    const char *name;
    const char *mediaType;
    const char *hex;
    float first;
};

/// The writing end of a FIFO.
class FifoWriter
{
public:
    explicit FifoWriter(const QString &path)
        : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC))
    {
    }
    ~FifoWriter() { close(); }
    FifoWriter(const FifoWriter &) = delete;
    FifoWriter &operator=(const FifoWriter &) = delete;

    bool write(const QByteArray &bytes) const
    {
        return ::write(m_descriptor, bytes.constData(), std::size_t(bytes.size())) == bytes.size();
    }
    int unread() const
    {
        int bytes = 0;
        ioctl(m_descriptor, FIONREAD, &bytes);
        return bytes;
    }
    void close()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
        m_descriptor = -1;
    }

private:
    int m_descriptor;
};

} // namespace

class StreamSimplePlayerTest : public PlayerTest
{
protected:
    static constexpr const char *rawType = "audio/x-raw;format=S16LE;rate=48000;channels=1";

    void make(const QString &content, const char *type = rawType)
    {
        m_player = std::make_unique<StreamSimplePlayer>(content, QString::fromLatin1(type),
                                                        QStringLiteral("id"),
                                                        QStringLiteral("plain"), nullptr);
        m_end = std::make_unique<EndSpy>(*m_player);
    }

    QString makeFifo()
    {
        QString fifo = path("fifo");
        mkfifo(QFile::encodeName(fifo).constData(), 0600);
        return fifo;
    }

    /// Counting samples as raw PCM.
    static QByteArray raw(int from, int to)
    {
        const auto samples = countingSamples(to);
        return QByteArray(reinterpret_cast<const char *>(samples.data() + from),
                          (to - from) * int(sizeof(short)));
    }

    void expectRefusal(const char *type, const std::string &reason)
    {
        writeFile(path("raw"), raw(0, 100));
        make(path("raw"), type);
        const LogCapture log("SimplePlayer");
        EXPECT_FALSE(m_player->play());
        ASSERT_EQ(log.countAt(log4cplus::ERROR_LOG_LEVEL), 1);
        EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL)[0], HasSubstr(reason));
    }

    std::unique_ptr<StreamSimplePlayer> m_player;
    std::unique_ptr<EndSpy> m_end;
};

class StreamEncodingTest : public StreamSimplePlayerTest,
                           public testing::WithParamInterface<Encoding>
{
};

INSTANTIATE_TEST_SUITE_P(
    Encodings, StreamEncodingTest,
    testing::Values(
        Encoding{"L8", "audio/L8;rate=8000", "ff40a0", 127.0F / 128},
        Encoding{"L16", "audio/L16;rate=48000", "7fffc0002000", 32767.0F / 32768},
        Encoding{"L24", "audio/L24;rate=48000", "7fffffc00000200000", 8388607.0F / 8388608},
        Encoding{"U8", "audio/x-raw;format=U8;rate=8000", "ff40a0", 127.0F / 128},
        Encoding{"S8", "audio/x-raw;format=S8;rate=8000", "7fc020", 127.0F / 128},
        Encoding{"S16LE", "audio/x-raw;format=S16LE;rate=48000", "ff7f00c00020", 32767.0F / 32768},
        Encoding{"S16BE", "audio/x-raw;format=S16BE;rate=48000", "7fffc0002000", 32767.0F / 32768},
        Encoding{"S24LE", "audio/x-raw;format=S24LE;rate=48000", "ffff7f0000c0000020",
                 8388607.0F / 8388608},
        Encoding{"S24BE", "audio/x-raw;format=S24BE;rate=48000", "7fffffc00000200000",
                 8388607.0F / 8388608},
        Encoding{"S32LE", "audio/x-raw;format=S32LE;rate=48000", "00ffff7f000000c000000020",
                 8388607.0F / 8388608},
        Encoding{"S32BE", "audio/x-raw;format=S32BE;rate=48000", "7fffff00c000000020000000",
                 8388607.0F / 8388608},
        Encoding{"F32LE", "audio/x-raw;format=F32LE;rate=48000", "0000803f000000bf0000803e", 1.0F},
        Encoding{"F32BE", "audio/x-raw;format=F32BE;rate=48000", "3f800000bf0000003e800000", 1.0F}),
    [](const auto &info) { return info.param.name; });

TEST_P(StreamEncodingTest, IsUnderstood)
{
    writeFile(path("raw"), QByteArray::fromHex(GetParam().hex));
    make(path("raw"), GetParam().mediaType);
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), (std::vector<float>{GetParam().first, -0.5F, 0.25F}));
}

TEST_F(StreamSimplePlayerTest, ReadsAMediaTypeInAnyCaseAndSpacing)
{
    writeFile(path("raw"), QByteArray::fromHex("4000"));
    make(path("raw"), " Audio/L16 ; Rate=\"48000\" ; CHANNELS=1");
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), std::vector<float>{0.5F});
}

TEST_F(StreamSimplePlayerTest, LeavesOutAnIncompleteFrame)
{
    writeFile(path("raw"), QByteArray::fromHex("40002000400020"));
    make(path("raw"), "audio/L16;rate=48000;channels=2");
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), (std::vector<float>{0.5F, 0.25F}));
}

TEST_F(StreamSimplePlayerTest, RefusesAnUnknownMediaType)
{
    expectRefusal("text/plain", "The stream format \"text/plain\" is not known");
}

TEST_F(StreamSimplePlayerTest, RefusesAMissingMediaType)
{
    expectRefusal("", "The stream format \"\" is not known");
}

TEST_F(StreamSimplePlayerTest, RefusesRawSamplesWithoutARate)
{
    expectRefusal("audio/L16;channels=2", "needs a rate");
}

TEST_F(StreamSimplePlayerTest, RefusesANegativeRate)
{
    expectRefusal("audio/L16;rate=-48000", "needs a rate");
}

TEST_F(StreamSimplePlayerTest, RefusesARateAboveTheMaximum)
{
    expectRefusal("audio/L16;rate=100000000", "needs a rate");
}

TEST_F(StreamSimplePlayerTest, RefusesMoreChannelsThanTheMaximum)
{
    expectRefusal("audio/L16;rate=48000;channels=100", "has no usable number of channels");
}

TEST_F(StreamSimplePlayerTest, ReportsAFileThatCanBeOpenedButNotRead)
{
    // The loopback has no speed, so reading this file fails.
    make(QStringLiteral("/sys/class/net/lo/speed"));
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_THAT(m_end->error(), HasSubstr("speed\" can't be read: Invalid argument"));
}

TEST_F(StreamSimplePlayerTest, RefusesZeroChannels)
{
    expectRefusal("audio/L16;rate=48000;channels=0", "has no usable number of channels");
}

TEST_F(StreamSimplePlayerTest, RefusesAnUnknownSampleFormat)
{
    expectRefusal("audio/x-raw;format=S17;rate=48000", "names no known sample format");
}

TEST_F(StreamSimplePlayerTest, RefusesAMissingStream)
{
    make(path("missing"));
    const LogCapture log("SimplePlayer");
    EXPECT_FALSE(m_player->play());
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                testing::ElementsAre(HasSubstr("No such file or directory")));
}

TEST_F(StreamSimplePlayerTest, RefusesADirectory)
{
    make(m_folder.path());
    EXPECT_FALSE(m_player->play());
}

TEST_F(StreamSimplePlayerTest, RefusesADevice)
{
    make(QStringLiteral("/dev/zero"));
    const LogCapture log("SimplePlayer");
    EXPECT_FALSE(m_player->play());
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                testing::ElementsAre(HasSubstr("\"/dev/zero\" is a device, not a sound")));
}

TEST_F(StreamSimplePlayerTest, RefusesAnEmptyFile)
{
    writeFile(path("empty"), {});
    make(path("empty"));
    EXPECT_FALSE(m_player->play());
}

TEST_F(StreamSimplePlayerTest, RefusesAFileThatIsNotASound)
{
    writeFile(path("text"), "no sound");
    make(path("text"), "audio/flac");
    EXPECT_FALSE(m_player->play());
}

TEST_F(StreamSimplePlayerTest, PlaysAFileUri)
{
    writeFile(path("raw"), raw(0, 1000));
    make(QUrl::fromLocalFile(path("raw")).toString());
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(1000));
}

TEST_F(StreamSimplePlayerTest, PlaysASoundFile)
{
    make(counting(), "audio/wav");
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(StreamSimplePlayerTest, WaitsForAFifosWriterWithoutBlockingTheCaller)
{
    make(makeFifo());
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_TRUE(m_player->play());
    EXPECT_LT(elapsed.elapsed(), 200);
    QTest::qWait(50);
    EXPECT_EQ(m_end->count(), 0);
    FifoWriter writer(path("fifo"));
    ASSERT_TRUE(writer.write(raw(0, 1000)));
    ASSERT_TRUE(hasHeard(1000));
}

TEST_F(StreamSimplePlayerTest, FailsWhenAFifosWriterDoesNotCome)
{
    for (const char *type : {rawType, "audio/wav"}) {
        QFile::remove(path("fifo"));
        make(makeFifo(), type);
        m_player->limits.fifoTimeoutMs = 300;
        m_player->loop = true;
        EXPECT_TRUE(m_player->play());
        ASSERT_TRUE(m_end->hasEndedOnce());
        EXPECT_THAT(m_end->error(), HasSubstr("fifo\" has sent nothing for 300 ms"));
    }
}

TEST_F(StreamSimplePlayerTest, FailsWhenAFifosWriterStopsWriting)
{
    make(makeFifo());
    m_player->limits.fifoTimeoutMs = 300;
    const FifoWriter writer(path("fifo"));
    ASSERT_TRUE(writer.write(raw(0, 1000)));
    EXPECT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->failed.count(), 1);
    EXPECT_EQ(heard(), countingFloats(1000));
}

TEST_F(StreamSimplePlayerTest, DoesNotCountAPauseAgainstAFifosWriter)
{
    make(makeFifo());
    m_player->limits.fifoTimeoutMs = 1000;
    FifoWriter writer(path("fifo"));
    m_player->play();
    m_player->pause();
    QTest::qWait(1200);
    m_player->play();
    settle();
    EXPECT_EQ(m_end->count(), 0) << m_end->error();
    ASSERT_TRUE(writer.write(raw(0, 1000)));
    writer.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1) << m_end->error();
}

TEST_F(StreamSimplePlayerTest, PlaysAFifoAsItFills)
{
    make(makeFifo());
    FifoWriter writer(path("fifo"));
    m_player->play();
    for (int frames = 0; frames < 5000; frames += 1000) {
        ASSERT_TRUE(writer.write(raw(frames, frames + 1000)));
        ASSERT_TRUE(hasHeard(frames + 1000));
    }
    EXPECT_EQ(heard(), countingFloats(5000));
    EXPECT_EQ(m_end->count(), 0);
}

TEST_F(StreamSimplePlayerTest, PlaysFramesThatArriveInPieces)
{
    make(makeFifo());
    FifoWriter writer(path("fifo"));
    m_player->play();
    const QByteArray bytes = raw(0, 1000);
    ASSERT_TRUE(writer.write(bytes.left(501)));
    ASSERT_TRUE(hasHeard(250));
    ASSERT_TRUE(writer.write(bytes.mid(501)));
    writer.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(1000));
}

TEST_F(StreamSimplePlayerTest, WaitsForTheRestOfAFrame)
{
    make(makeFifo());
    FifoWriter writer(path("fifo"));
    m_player->play();
    const QByteArray bytes = raw(0, 1000);
    ASSERT_TRUE(writer.write(bytes.left(1)));
    ASSERT_TRUE(waitFor([&] { return writer.unread() == 0; }));
    ASSERT_TRUE(writer.write(bytes.mid(1)));
    writer.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(1000));
}

TEST_F(StreamSimplePlayerTest, EndsARepetitionWhenTheFileHasBecomeEmpty)
{
    writeFile(path("raw"), raw(0, 6000));
    make(path("raw"));
    m_player->loop = true;
    m_player->play();
    ASSERT_TRUE(hasHeard(100));
    ASSERT_EQ(truncate(QFile::encodeName(path("raw")).constData(), 0), 0);
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1) << m_end->error();
}

TEST_F(StreamSimplePlayerTest, EndsWhenAFifosWriterCloses)
{
    make(makeFifo());
    FifoWriter writer(path("fifo"));
    m_player->play();
    ASSERT_TRUE(writer.write(raw(0, 3000)));
    writer.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1);
    EXPECT_EQ(heard(), countingFloats(3000));
}

TEST_F(StreamSimplePlayerTest, WaitsForAFifosNextWriterWhenItRepeats)
{
    make(makeFifo());
    m_player->loop = true;
    m_player->play();
    FifoWriter first(path("fifo"));
    ASSERT_TRUE(first.write(raw(0, 1000)));
    ASSERT_TRUE(hasHeard(1000));
    first.close();
    QTest::qWait(50);
    EXPECT_EQ(m_end->count(), 0);
    FifoWriter second(path("fifo"));
    ASSERT_TRUE(second.write(raw(1000, 2000)));
    ASSERT_TRUE(hasHeard(2000));
    EXPECT_EQ(heard(), countingFloats(2000));
}

TEST_F(StreamSimplePlayerTest, LosesNothingOfAFifoDuringAPause)
{
    make(makeFifo());
    FifoWriter writer(path("fifo"));
    ASSERT_TRUE(writer.write(raw(0, 12000)));
    m_player->play();
    for (const int frames : {1000, 5000, 9000}) {
        ASSERT_TRUE(hasHeard(frames));
        m_player->pause();
        ASSERT_TRUE(m_player->play());
    }
    ASSERT_TRUE(writer.write(raw(12000, 20000)));
    writer.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(20000));
}

TEST_F(StreamSimplePlayerTest, CanBeStoppedWhileAFifoHasNoWriter)
{
    make(makeFifo());
    m_player->play();
    m_player->stop();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->stopped.count(), 1);
}

TEST_F(StreamSimplePlayerTest, PlaysASoundFileThroughAFifo)
{
    make(makeFifo(), "audio/wav");
    FifoWriter writer(path("fifo"));
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(writer.write(readFile(counting())));
    writer.close();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1) << m_end->error();
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(StreamSimplePlayerTest, CollectsASoundFileDuringAPause)
{
    make(makeFifo(), "audio/wav");
    FifoWriter writer(path("fifo"));
    const QByteArray sound = readFile(counting());
    ASSERT_TRUE(writer.write(sound.left(5000)));
    m_player->play();
    m_player->pause();
    ASSERT_TRUE(writer.write(sound.mid(5000)));
    writer.close();
    m_player->play();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(StreamSimplePlayerTest, ReportsASoundFileThroughAFifoThatIsTooLarge)
{
    make(makeFifo(), "audio/wav");
    m_player->limits.httpMaxBytes = 1000;
    FifoWriter writer(path("fifo"));
    m_player->play();
    ASSERT_TRUE(writer.write(readFile(counting())));
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_THAT(m_end->error(), HasSubstr("is larger than the 1000 bytes"));
}
