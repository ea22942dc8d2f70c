// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Sound files, good and bad.

#include "PlayerTest.h"
#include "support/LogCapture.h"
#include <simpleplayer/DataSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QtEndian>
#include <QUrl>

#include <gmock/gmock.h>

#include <cmath>
#include <malloc.h>
#include <sys/stat.h>

using testing::HasSubstr;

namespace {

struct Format
{
    const char *name;
    int format;
    int rate;
    bool exact; // keeps every sample
};

} // namespace

class SoundFormatTest : public PlayerTest, public testing::WithParamInterface<Format>
{
};

INSTANTIATE_TEST_SUITE_P(
    Formats, SoundFormatTest,
    testing::Values(Format{"Wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000, true},
                    Format{"ExtensibleWav", SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, 48000, true},
                    Format{"Flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100, true},
                    Format{"Vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, false},
                    Format{"Opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000, false},
                    Format{"Mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, false}),
    [](const auto &info) { return info.param.name; });

TEST_P(SoundFormatTest, IsPlayedWithExactlyItsFrames)
{
    const Format format = GetParam();
    const auto samples = sineSamples(soundFrames, format.rate, 1000);
    const QString file = path("sound");
    writeSound(file, format.format, format.rate, samples);
    UriSimplePlayer player(file, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    EndSpy end(player);
    ASSERT_TRUE(player.play());
    ASSERT_TRUE(end.hasEndedOnce());
    ASSERT_EQ(end.ended.count(), 1) << end.error();

    auto heardSamples = m_devices.heard();
    const auto expected = asFloats(samples);
    ASSERT_GE(heardSamples.size(), expected.size());
    double difference = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        difference = std::max(difference, double(std::fabs(heardSamples[i] - expected[i])));
    }
    EXPECT_LE(difference, format.exact ? 0.0 : 0.1);
    for (std::size_t i = expected.size(); i < heardSamples.size(); ++i) {
        ASSERT_EQ(heardSamples[i], 0.0F) << "a frame too many: " << i;
    }
}

TEST_P(SoundFormatTest, IsRepeatedFromItsFirstFrame)
{
    const Format format = GetParam();
    const QString file = path("sound");
    writeSound(file, format.format, format.rate, sineSamples(soundFrames, format.rate, 1000));
    UriSimplePlayer player(file, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    player.loop = true;
    player.play();
    ASSERT_TRUE(hasHeard(2 * soundFrames + 1000));
    player.stop();
    const auto samples = m_devices.heard();
    for (int i = 0; i + soundFrames < int(samples.size()); ++i) {
        ASSERT_EQ(samples[i], samples[i + soundFrames]) << "at frame " << i;
    }
}

TEST_P(SoundFormatTest, IsPlayedFromMemory)
{
    const Format format = GetParam();
    const QString file = path("sound");
    writeSound(file, format.format, format.rate, sineSamples(soundFrames, format.rate, 1000));
    DataSimplePlayer player(readFile(file), QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    EndSpy end(player);
    ASSERT_TRUE(player.play());
    ASSERT_TRUE(end.hasEndedOnce());
    ASSERT_EQ(end.ended.count(), 1) << end.error();
    EXPECT_GE(m_devices.heard().size(), std::size_t(soundFrames));
}

/// Sounds that can't be played: play() returns false and logs the reason.
class UnplayableTest : public PlayerTest
{
protected:
    void expectRefusal(SimplePlayer &player, const std::string &reason)
    {
        const LogCapture log("SimplePlayer");
        EndSpy end(player);
        EXPECT_FALSE(player.play());
        ASSERT_EQ(log.countAt(log4cplus::ERROR_LOG_LEVEL), 1);
        EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL)[0], HasSubstr(reason));
        settle();
        EXPECT_EQ(end.count(), 0);
    }

    void expectRefusal(const QString &uri, const std::string &reason, const char *device = "plain")
    {
        UriSimplePlayer player(uri, QStringLiteral("id"), QString::fromLatin1(device), nullptr);
        expectRefusal(player, reason);
    }

    void expectDataRefusal(const QByteArray &data, const std::string &reason)
    {
        DataSimplePlayer player(data, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
        expectRefusal(player, reason);
    }
};

TEST_F(UnplayableTest, MissingFile)
{
    expectRefusal(path("missing.wav"), "missing.wav\" can't be opened: No such file or directory");
}

TEST_F(UnplayableTest, Directory)
{
    expectRefusal(m_folder.path(), "is a directory, not a sound");
}

TEST_F(UnplayableTest, Fifo)
{
    mkfifo(QFile::encodeName(path("fifo")).constData(), 0600);
    expectRefusal(path("fifo"), "fifo\" is not a regular file");
}

TEST_F(UnplayableTest, EmptyFile)
{
    writeFile(path("empty.wav"), {});
    expectRefusal(path("empty.wav"), "empty.wav\" is empty");
}

TEST_F(UnplayableTest, TextFile)
{
    writeFile(path("text.wav"), "This is a text and no sound at all.\n");
    expectRefusal(path("text.wav"), "holds no sound in a known format");
}

TEST_F(UnplayableTest, FileInAnotherFormat)
{
    for (const int format : {SF_FORMAT_AIFF | SF_FORMAT_PCM_16, SF_FORMAT_AU | SF_FORMAT_PCM_16,
                             SF_FORMAT_CAF | SF_FORMAT_PCM_16, SF_FORMAT_W64 | SF_FORMAT_PCM_16,
                             SF_FORMAT_RF64 | SF_FORMAT_PCM_16}) {
        writeSound(path("sound"), format, rate, countingSamples(100));
        expectRefusal(path("sound"), "holds no sound in a known format");
        expectDataRefusal(readFile(path("sound")), "holds no sound in a known format");
    }
}

TEST_F(UnplayableTest, WavFileThatIsCutOff)
{
    const QByteArray whole = readFile(counting());
    writeFile(path("cut.wav"), whole.left(whole.size() - 100));
    expectRefusal(path("cut.wav"), "is cut off: 100 bytes are missing");
}

TEST_F(UnplayableTest, WavFileThatIsCutOffInItsHeader)
{
    writeFile(path("cut.wav"), readFile(counting()).left(20));
    expectRefusal(path("cut.wav"), "is cut off");
}

TEST_F(UnplayableTest, WavFileWithoutFrames)
{
    writeSound(path("none.wav"), wav, rate, {});
    expectRefusal(path("none.wav"), "holds no sound");
}

TEST_F(UnplayableTest, SampleRateBeyondAnyDevice)
{
    constexpr int rateOffset = 24;
    QByteArray sound = readFile(counting());
    sound.replace(rateOffset, 4, QByteArray("\x00\x4f\x70\x75", 4));
    expectDataRefusal(sound, "can't be played: it claims 1 channels at 1970294528 Hz");
}

TEST_F(UnplayableTest, MoreChannelsThanAnyDeviceHas)
{
    writeSound(path("many.wav"), wav, rate, countingSamples(33), 33);
    expectRefusal(path("many.wav"), "can't be played: it claims 33 channels at 48000 Hz");
}

TEST_F(UnplayableTest, SoundBeyondTheLimit)
{
    UriSimplePlayer player(counting(), QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    player.limits.maxSoundBytes = qint64(soundFrames) * sizeof(float) - 1;
    expectRefusal(player, "is too long");
}

TEST_F(UnplayableTest, NoName)
{
    expectRefusal(QString(), "No sound is named");
}

TEST_F(UnplayableTest, UnknownScheme)
{
    expectRefusal(QStringLiteral("gopher://localhost/sound.wav"),
                  "has a scheme that is not supported");
}

TEST_F(UnplayableTest, FileOfAnotherMachine)
{
    expectRefusal(QStringLiteral("file://elsewhere/sound.wav"),
                  "does not name a file on this device");
}

TEST_F(UnplayableTest, MalformedUri)
{
    expectRefusal(QStringLiteral("http://[::1/sound.wav"), "is not a valid URI");
}

TEST_F(UnplayableTest, UriWithoutAHostEvenIfThereIsSuchAFile)
{
    const QString folder = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_folder.path()));
    ASSERT_TRUE(QFile::rename(counting(), QStringLiteral("http:sound.wav")));
    expectRefusal(QStringLiteral("http:sound.wav"), "is not a valid URI");
    QDir::setCurrent(folder);
}

TEST_F(UnplayableTest, EmptyData)
{
    expectDataRefusal({}, "The sound data is empty");
}

TEST_F(UnplayableTest, DataThatIsShorterThanAnyHeader)
{
    expectDataRefusal("RIFF", "holds no sound in a known format");
}

TEST_F(UnplayableTest, UndecodableData)
{
    expectDataRefusal(QByteArray(1000, 'x'), "The sound data holds no sound in a known format");
}

TEST_F(UnplayableTest, DataThatIsCutOff)
{
    expectDataRefusal(readFile(counting()).left(1000), "The sound data is cut off");
}

TEST_F(UnplayableTest, VorbisFileThatIsCutOffInItsHeaders)
{
    const QString file = path("sound.ogg");
    writeSound(file, SF_FORMAT_OGG | SF_FORMAT_VORBIS, rate, sineSamples(24000, rate, 1000));
    writeFile(path("cut.ogg"), readFile(file).left(1000));
    expectRefusal(path("cut.ogg"), "is cut off or damaged at its beginning");
}

TEST_F(UnplayableTest, VorbisDataWithDamagedHeaders)
{
    const QString file = path("sound.ogg");
    writeSound(file, SF_FORMAT_OGG | SF_FORMAT_VORBIS, rate, sineSamples(24000, rate, 1000));
    QByteArray data = readFile(file);
    data[1000] = char(data.at(1000) ^ 1);
    expectDataRefusal(data, "The sound data is cut off or damaged at its beginning");
}

TEST_F(UnplayableTest, LeaksNoMemoryForDamagedVorbisData)
{
    const QString file = path("sound.ogg");
    writeSound(file, SF_FORMAT_OGG | SF_FORMAT_VORBIS, rate, sineSamples(24000, rate, 1000));
    const QByteArray data = readFile(file).left(1000);
    const auto heapAfterRefusals = [&data](int times) {
        for (int i = 0; i < times; ++i) {
            DataSimplePlayer player(data, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
            EXPECT_FALSE(player.play());
        }
        return long(mallinfo2().uordblks);
    };
    constexpr int times = 200;
    const long before = heapAfterRefusals(times); // after all one-time allocations
    const long perRefusal = (heapAfterRefusals(times) - before) / times;
    EXPECT_LT(perRefusal, 1000);
}

TEST_F(UnplayableTest, DeviceThatIsBusy)
{
    expectRefusal(counting(), "The sound device \"busy\" is busy: something else is using it",
                  "busy");
}

TEST_F(UnplayableTest, DeviceThatMustNotBeOpened)
{
    expectRefusal(counting(), "The sound device \"denied\" can't be opened: permission denied",
                  "denied");
}

TEST_F(UnplayableTest, DeviceThatNobodyMayOpen)
{
    expectRefusal(counting(), "can't be opened: permission denied", "forbidden");
}

TEST_F(UnplayableTest, DeviceThatIsNotPluggedIn)
{
    expectRefusal(counting(), "The sound device \"missing\" doesn't exist", "missing");
}

TEST_F(UnplayableTest, DeviceWithoutADriver)
{
    expectRefusal(counting(), "The sound device \"unconfigured\" doesn't exist", "unconfigured");
}

TEST_F(UnplayableTest, DeviceThatIsBroken)
{
    expectRefusal(counting(), "The sound device \"broken\" can't be opened: Input/output error",
                  "broken");
}

TEST_F(UnplayableTest, DeviceThatTakesNoSound)
{
    expectRefusal(
        counting(),
        "The sound device \"picky\" takes no sound of 48000 Hz and 1 channels: ", "picky");
}

TEST_F(UnplayableTest, DeviceThatDoesNotExist)
{
    expectRefusal(counting(), "The sound device \"nowhere\" doesn't exist", "nowhere");
}

TEST_F(UnplayableTest, CannotBeTriedAgain)
{
    UriSimplePlayer player(path("counting.wav"), QStringLiteral("id"), QStringLiteral("plain"),
                           nullptr);
    EndSpy end(player);
    EXPECT_FALSE(player.play());
    counting();
    EXPECT_FALSE(player.play());
    settle();
    EXPECT_EQ(end.count(), 0);
}

/// Files with special names, and slow devices.
class UriSimplePlayerTest : public PlayerTest
{
protected:
    void expectPlayed(const QString &uri)
    {
        UriSimplePlayer player(uri, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
        EndSpy end(player);
        ASSERT_TRUE(player.play());
        ASSERT_TRUE(end.hasEndedOnce());
        EXPECT_EQ(end.ended.count(), 1) << end.error();
        EXPECT_EQ(heard(), countingFloats());
    }
};

TEST_F(UriSimplePlayerTest, PlaysAFileUri)
{
    expectPlayed(QUrl::fromLocalFile(counting()).toString());
}

TEST_F(UriSimplePlayerTest, PlaysAFileUriThatNamesThisMachine)
{
    expectPlayed(QStringLiteral("file://localhost") + counting());
}

TEST_F(UriSimplePlayerTest, PlaysAFileUriWithEscapes)
{
    const QString file = path("a b%c#d?.wav");
    QFile::rename(counting(), file);
    expectPlayed(QString::fromLatin1(QUrl::fromLocalFile(file).toEncoded()));
}

TEST_F(UriSimplePlayerTest, PlaysABarePathWithSpecialCharacters)
{
    const QString file = path("at 12:30 100%.wav");
    QFile::rename(counting(), file);
    expectPlayed(file);
}

TEST_F(UriSimplePlayerTest, FailsAtTheEndOfADamagedFile)
{
    const QString flac = path("sound.flac");
    writeSound(flac, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, rate, sineSamples(24000, rate, 1000));
    const QByteArray whole = readFile(flac);
    writeFile(flac, whole.left(whole.size() / 2));
    UriSimplePlayer player(flac, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    EndSpy end(player);
    ASSERT_TRUE(player.play());
    ASSERT_TRUE(end.hasEndedOnce());
    ASSERT_EQ(end.failed.count(), 1);
    EXPECT_THAT(end.error(), HasSubstr("sound.flac\""));
    EXPECT_GT(m_devices.heard().size(), 1000U);
}

namespace {

// The 36 bits in the header of a FLAC file that are the number of frames; zero means unknown.
void leaveLengthOpen(const QString &flac)
{
    QByteArray bytes = readFile(flac);
    bytes[21] = char(bytes[21] & 0xf0);
    for (int i = 22; i < 26; ++i) {
        bytes[i] = 0;
    }
    writeFile(flac, bytes);
}

} // namespace

TEST_F(UriSimplePlayerTest, PlaysAFlacFileWithoutALength)
{
    const QString flac = path("open.flac");
    writeSound(flac, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, rate, countingSamples(soundFrames));
    leaveLengthOpen(flac);
    expectPlayed(flac);
}

TEST_F(UriSimplePlayerTest, FailsAtTheLimitWhenTheFileHasNoLength)
{
    const QString flac = path("open.flac");
    writeSound(flac, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, rate, countingSamples(soundFrames));
    leaveLengthOpen(flac);
    UriSimplePlayer player(flac, QStringLiteral("id"), QStringLiteral("plain"), nullptr);
    player.limits.maxSoundBytes = qint64(soundFrames) / 2 * sizeof(float);
    EndSpy end(player);
    ASSERT_TRUE(player.play());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_THAT(end.error(), HasSubstr("is too long"));
}

/// The length of the file in the header, and that of the samples.
class OpenLengthTest : public UriSimplePlayerTest,
                       public testing::WithParamInterface<std::tuple<quint32, quint32>>
{
};

// Some programs write the first as if there were no samples.
INSTANTIATE_TEST_SUITE_P(Lengths, OpenLengthTest,
                         testing::Combine(testing::Values(0U, 36U, 0x7ffff024U, 0xffffffffU),
                                          testing::Values(0U, 0x7ffff000U, 0x7fffffffU,
                                                          0xffffffffU)),
                         [](const auto &info) {
                             return std::to_string(std::get<0>(info.param)) + "And" +
                                    std::to_string(std::get<1>(info.param));
                         });

// The lengths that a program leaves if it can't seek back to the header, as on a pipe.
TEST_P(OpenLengthTest, LetsAWavFilePlayToTheEndOfTheFile)
{
    QByteArray bytes = readFile(counting());
    qToLittleEndian(std::get<0>(GetParam()), bytes.data() + 4);
    qToLittleEndian(std::get<1>(GetParam()), bytes.data() + bytes.indexOf("data") + 4);
    writeFile(path("open.wav"), bytes);
    expectPlayed(path("open.wav"));
}

TEST_F(UriSimplePlayerTest, PlaysNoOtherChunkInPlaceOfMissingSamples)
{
    QByteArray bytes = readFile(counting());
    qToLittleEndian(quint32(0), bytes.data() + bytes.indexOf("data") + 4);
    writeFile(path("empty.wav"), bytes);
    UriSimplePlayer player(path("empty.wav"), QStringLiteral("id"), QStringLiteral("plain"),
                           nullptr);
    const LogCapture log("SimplePlayer");
    EXPECT_FALSE(player.play());
    EXPECT_EQ(log.find("holds no sound: it has no frames").size(), 1U);
}

TEST_F(UriSimplePlayerTest, IsNotBlockedByASlowDevice)
{
    UriSimplePlayer player(counting(), QStringLiteral("id"), QStringLiteral("slow"), nullptr);
    EndSpy end(player);
    EXPECT_TRUE(player.play());
    // The device takes longer to open, so nothing has been heard yet.
    EXPECT_TRUE(m_devices.heard().empty());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(UriSimplePlayerTest, ReportsASlowDeviceThatFailsLater)
{
    const LogCapture log("SimplePlayer");
    UriSimplePlayer player(counting(), QStringLiteral("id"), QStringLiteral("slow_busy"), nullptr);
    EndSpy end(player);
    EXPECT_TRUE(player.play());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_THAT(end.error(), HasSubstr("is busy"));
    ASSERT_EQ(log.countAt(log4cplus::ERROR_LOG_LEVEL), 1);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL)[0], HasSubstr("is busy"));
}
