// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTest.h"

#include <QFile>
#include <QtEndian>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;

namespace {

constexpr int lengthMs = 500;

QByteArray bigEndian(const std::vector<short> &samples)
{
    QByteArray bytes;
    for (const short sample : samples) {
        const short swapped = qToBigEndian(sample);
        bytes.append(reinterpret_cast<const char *>(&swapped), sizeof swapped);
    }
    return bytes;
}

QJsonObject streamItem(const QString &content)
{
    return {{"id", "sound"},
            {"type", 2},
            {"content", content},
            {"contentStreamFormat", "audio/L16;rate=48000;channels=1"}};
}

} // namespace

class SoundKindsTest : public SoundTest
{
protected:
    void play(const QJsonObject &item)
    {
        start();
        m_requester.enqueue(item);
        EXPECT_EQ(m_requester.answer(), "");
        EXPECT_TRUE(m_requester.waitFor("finished sound")) << m_host.log().toStdString();
    }

    /// Expects that the whole sound and nothing else was heard, and only on the notification
    /// device.
    void expectExactlyTheSound()
    {
        const Heard heard = notifications();
        EXPECT_EQ(heard.frames(), framesOf(lengthMs));
        EXPECT_NEAR(heard.toneMs(frequency), lengthMs, 15);
        EXPECT_EQ(music().frames(), 0);
        EXPECT_THAT(m_requester.responses(), ElementsAre("started sound", "finished sound"));
    }

    QString toneWav() { return toneFile(frequency, lengthMs); }
};

struct Format
{
    const char *suffix;
    int format;
    int sloppyFrames; // what a lossy codec may add or lose at the ends
};

class SoundFormatsTest : public SoundKindsTest, public testing::WithParamInterface<Format>
{
};

TEST_P(SoundFormatsTest, AFileSoundsOnTheNotificationDevice)
{
    const Format &format = GetParam();
    play(fileItem("sound", toneFile(frequency, lengthMs, format.format, format.suffix)));
    const Heard heard = notifications();
    EXPECT_NEAR(heard.frames(), framesOf(lengthMs), format.sloppyFrames);
    EXPECT_NEAR(heard.toneMs(frequency), lengthMs, 25);
    EXPECT_EQ(music().frames(), 0);
    EXPECT_THAT(m_requester.responses(), ElementsAre("started sound", "finished sound"));
}

INSTANTIATE_TEST_SUITE_P(Formats, SoundFormatsTest,
                         testing::Values(Format{"wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0},
                                         Format{"flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 0},
                                         Format{"ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 50},
                                         Format{"opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 50},
                                         Format{"mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III,
                                                50}),
                         [](const auto &info) { return std::string(info.param.suffix); });

TEST_F(SoundKindsTest, AFileUriSoundsOnTheNotificationDevice)
{
    play(fileItem("sound", "file://" + toneWav()));
    expectExactlyTheSound();
}

TEST_F(SoundKindsTest, DataInBase64SoundsOnTheNotificationDevice)
{
    const QString content = QString::fromLatin1(readFile(toneWav()).toBase64());
    play({{"id", "sound"}, {"type", 1}, {"content", content}});
    expectExactlyTheSound();
}

TEST_F(SoundKindsTest, ARawStreamFromAFileSoundsOnTheNotificationDevice)
{
    const QString file = m_host.writeFile("tone.l16", bigEndian(tone(frequency, lengthMs)));
    play(streamItem(file));
    expectExactlyTheSound();
}

TEST_F(SoundKindsTest, ARawStreamFromAFifoSoundsOnTheNotificationDevice)
{
    const QByteArray fifo = QFile::encodeName(inFolder("tone.fifo"));
    ASSERT_EQ(mkfifo(fifo.constData(), 0600), 0);
    // Open for reading and writing, so this does not wait for the player; it fits into the
    // pipe.
    const int writer = open(fifo.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const QByteArray bytes = bigEndian(tone(frequency, lengthMs));
    ASSERT_EQ(write(writer, bytes.constData(), std::size_t(bytes.size())), bytes.size());
    start();
    m_requester.enqueue(streamItem(fifo));
    EXPECT_TRUE(m_requester.waitFor("started sound"));
    close(writer);
    EXPECT_TRUE(m_requester.waitFor("finished sound")) << m_host.log().toStdString();
    expectExactlyTheSound();
}

TEST_F(SoundKindsTest, AFileOverHttpSoundsOnTheNotificationDevice)
{
    HttpServer server;
    play(fileItem("sound", server.serve("tone.wav", readFile(toneWav()))));
    expectExactlyTheSound();
}

TEST_F(SoundKindsTest, ARawStreamOverHttpSoundsOnTheNotificationDevice)
{
    HttpServer server;
    play(streamItem(server.serve("tone.l16", bigEndian(tone(frequency, lengthMs)))));
    expectExactlyTheSound();
}

TEST_F(SoundKindsTest, APlaceholderIsSilent)
{
    play({{"id", "sound"}, {"type", 3}});
    EXPECT_EQ(notifications().frames(), 0);
    EXPECT_THAT(m_requester.responses(), ElementsAre("started sound", "finished sound"));
}
