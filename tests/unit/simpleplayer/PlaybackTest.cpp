// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The frames of a sound that are heard.

#include "PlayerTest.h"
#include "support/LogCapture.h"
#include "support/Sanitized.h"
#include <simpleplayer/UriSimplePlayer.h>

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <sys/resource.h>

using testing::AllOf;
using testing::Ge;
using testing::Le;

class PlaybackTest : public PlayerTest
{
protected:
    void make(const QString &uri, const char *device = "plain")
    {
        m_player = std::make_unique<UriSimplePlayer>(uri, QStringLiteral("id"),
                                                     QString::fromLatin1(device), nullptr);
        m_end = std::make_unique<EndSpy>(*m_player);
    }

    /// How long the device "hangs" takes to open.
    static constexpr int hangingMs = 6000;

    /// Plays the counting sound to its end.
    void playOn(const char *device)
    {
        make(counting(), device);
        ASSERT_TRUE(m_player->play());
        ASSERT_TRUE(m_end->hasEndedOnce());
    }

    /// Plays the counting sound on a device with faults, and expects every frame.
    void playWholeOn(const char *device)
    {
        playOn(device);
        EXPECT_EQ(m_end->ended.count(), 1);
        EXPECT_EQ(heard(), countingFloats());
    }

    /// Expects a linear fade from full to the gain, in the time of the fade.
    static void expectFade(const std::vector<float> &samples, const std::vector<float> &full,
                           double gain, int fadeMs)
    {
        const int fadeFrames = rate * fadeMs / 1000;
        const auto changed = std::mismatch(full.begin(), full.end(), samples.begin()).first;
        const auto start = changed - full.begin() - 1; // the first frame of a fade is unchanged
        for (int i = 0; i < int(full.size()); ++i) {
            const double part = std::clamp(double(i - start) / fadeFrames, 0.0, 1.0);
            ASSERT_FLOAT_EQ(samples[i], float(full[i] * (1.0 - (1.0 - gain) * part)))
                << "at frame " << i;
        }
    }

    void pauseAfter(std::initializer_list<int> frames)
    {
        for (const int count : frames) {
            ASSERT_TRUE(m_player->play());
            ASSERT_TRUE(hasHeard(count));
            m_player->pause();
        }
    }

    std::unique_ptr<UriSimplePlayer> m_player;
    std::unique_ptr<EndSpy> m_end;
};

class PlaybackUsageTest : public PlaybackTest, public testing::WithParamInterface<int>
{
};

INSTANTIATE_TEST_SUITE_P(Usages, PlaybackUsageTest,
                         testing::Values(SimplePlayer::UsageMedia, SimplePlayer::UsageNotification),
                         [](const auto &info) {
                             return info.param == SimplePlayer::UsageMedia ? "Media"
                                                                           : "Notification";
                         });

TEST_P(PlaybackUsageTest, PlaysEveryFrameOnceAndInOrder)
{
    make(counting());
    m_player->usage = GetParam();
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_P(PlaybackUsageTest, ResumesAtTheFirstFrameThatWasNotHeard)
{
    make(counting(30000));
    m_player->usage = GetParam();
    pauseAfter({100, 3000, 9000, 20000});
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(30000));
}

TEST_P(PlaybackUsageTest, ResumesAtTheRightFrameOnHardware)
{
    make(counting(30000), "hardware");
    m_player->usage = GetParam();
    pauseAfter({100, 3000, 9000, 20000});
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(30000));
}

TEST_F(PlaybackTest, IsSilentAtOnceWhenHardwareIsPaused)
{
    make(counting(), "hardware");
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    const auto atPause = m_devices.heard().size();
    m_player->pause();
    // The frames in the buffer, four times as many, are not heard.
    EXPECT_LT(m_devices.heard().size(), atPause + 1200);
}

TEST_F(PlaybackTest, IsSilentDuringAPause)
{
    make(counting());
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    m_player->pause();
    const auto before = m_devices.heard();
    EXPECT_LT(before.size(), std::size_t(soundFrames));
    QTest::qWait(100);
    EXPECT_EQ(m_devices.heard(), before);
}

TEST_F(PlaybackTest, IsSilentOnceStopped)
{
    make(counting());
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    m_player->stop();
    const auto before = m_devices.heard();
    EXPECT_LT(before.size(), std::size_t(soundFrames));
    EXPECT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_devices.heard(), before);
}

TEST_F(PlaybackTest, IsSilentOnceDestroyed)
{
    make(counting());
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    m_player.reset();
    const auto before = m_devices.heard();
    EXPECT_LT(before.size(), std::size_t(soundFrames));
    settle();
    EXPECT_EQ(m_end->count(), 0);
    EXPECT_EQ(m_devices.heard(), before);
}

TEST_F(PlaybackTest, IsDestroyedAtOnceIfItsDeviceHangs)
{
    make(counting(), "hangs");
    EXPECT_TRUE(m_player->play());
    QElapsedTimer elapsed;
    elapsed.start();
    m_player.reset();
    EXPECT_LT(elapsed.elapsed(), 500);
    playOn("plain");
    EXPECT_EQ(m_end->ended.count(), 1);
}

TEST_F(PlaybackTest, PausesEvenIfItsDeviceHangsAndThenCannotGoOn)
{
    make(counting(), "hangs");
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_TRUE(m_player->play());
    m_player->pause();
    const LogCapture log("SimplePlayer");
    EXPECT_FALSE(m_player->play());
    EXPECT_LT(elapsed.elapsed(), hangingMs / 2);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                testing::ElementsAre(testing::HasSubstr("device \"hangs\" doesn't respond")));
}

TEST_F(PlaybackTest, GoesOnAfterAPauseOnADeviceThatTookLongToOpen)
{
    make(counting(), "slow");
    EXPECT_TRUE(m_player->play());
    m_player->pause();
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(PlaybackTest, RepeatsWithoutAGap)
{
    make(counting());
    m_player->loop = true;
    m_player->play();
    ASSERT_TRUE(hasHeard(3 * soundFrames));
    m_player->stop();
    const auto samples = m_devices.heard();
    const auto once = countingFloats();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(samples[i], once[i % once.size()]) << "at frame " << i;
    }
}

TEST_F(PlaybackTest, ResumesARepetitionAtTheRightFrame)
{
    make(counting());
    m_player->loop = true;
    m_player->play();
    for (const int frames : {soundFrames - 500, soundFrames + 500, 2 * soundFrames}) {
        ASSERT_TRUE(hasHeard(frames));
        m_player->pause();
        m_player->play();
    }
    ASSERT_TRUE(hasHeard(3 * soundFrames));
    m_player->stop();
    const auto samples = heard();
    const auto once = countingFloats();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(samples[i], once[i % once.size()]) << "at frame " << i;
    }
}

TEST_F(PlaybackTest, EndsWhenTheLastFrameHasBeenHeard)
{
    make(counting());
    std::size_t heardAtEnd = 0;
    QObject::connect(m_player.get(), &SimplePlayer::playbackEnded,
                     [&] { heardAtEnd = m_devices.heard().size(); });
    m_player->play();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_GE(heardAtEnd, std::size_t(soundFrames));
}

TEST_F(PlaybackTest, EndsAfterAPauseInItsLastFrames)
{
    make(counting());
    m_player->play();
    ASSERT_TRUE(hasHeard(soundFrames - 100));
    m_player->pause();
    m_player->play();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1);
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(PlaybackTest, PlaysASoundThatIsShorterThanAPeriod)
{
    make(counting(7));
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(7));
}

TEST_F(PlaybackTest, HasAThreadOnlyWhileItPlays)
{
    make(counting());
    const int before = threads();
    m_player->play();
    EXPECT_EQ(threads(), before + 1);
    m_player->pause();
    EXPECT_EQ(threads(), before);
    m_player->play();
    EXPECT_EQ(threads(), before + 1);
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(threads(), before);
}

TEST_F(PlaybackTest, ClosesTheDeviceDuringAPause)
{
    make(counting());
    const auto descriptors = [] {
        return QDir(QStringLiteral("/proc/self/fd"))
            .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
            .count();
    };
    m_player->play();
    ASSERT_TRUE(hasHeard(1000));
    const int playing = descriptors();
    m_player->pause();
    EXPECT_LT(descriptors(), playing);
}

TEST_F(PlaybackTest, PlaysOnceThereAreFileDescriptorsAgain)
{
    if (typesAreCheckedThroughAPipe) {
        GTEST_SKIP() << "UBSan needs file descriptors itself";
    }
    const QString file = counting();
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    make(file);
    EXPECT_FALSE(m_player->play());
    setrlimit(RLIMIT_NOFILE, &before);

    make(file);
    EXPECT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats());
}

TEST_F(PlaybackTest, RecoversFromAnUnderrun)
{
    playWholeOn("underruns");
}

TEST_F(PlaybackTest, ContinuesWhereADeviceResumes)
{
    playWholeOn("suspends");
}

TEST_F(PlaybackTest, WritesFramesAgainThatASuspensionHasLost)
{
    playWholeOn("suspends_forgets");
}

TEST_F(PlaybackTest, RecognizesASuspendedDeviceByItsState)
{
    playWholeOn("sleeps");
}

TEST_F(PlaybackTest, LosesNothingWhenADeviceTakesNothingForAWhile)
{
    playWholeOn("hesitates");
}

TEST_F(PlaybackTest, WaitsForFramesBeyondTheBufferOfTheDevice)
{
    QElapsedTimer elapsed;
    elapsed.start();
    playOn("distant");
    EXPECT_EQ(m_end->ended.count(), 1);
    // A quarter of a second of sound, with a latency of a second.
    EXPECT_GE(elapsed.elapsed(), 1200);
}

TEST_F(PlaybackTest, CanBeStoppedWhileItWaitsForItsEnd)
{
    make(counting(), "distant");
    m_player->play();
    ASSERT_TRUE(hasHeard(soundFrames));
    m_player->stop();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->stopped.count(), 1);
}

TEST_F(PlaybackTest, EndsOnADeviceThatCannotReportItsDelay)
{
    playWholeOn("clueless");
}

TEST_F(PlaybackTest, CanBeResumedWhenTheDeviceFailedDuringThePause)
{
    // The pause plays the buffer to its end, for which it writes a little silence; then the device
    // fails.
    make(counting(), "wants_sound");
    m_player->loop = true;
    m_player->play();
    ASSERT_TRUE(hasHeard(100));
    m_player->pause();
    settle();
    EXPECT_EQ(m_end->count(), 0);
    const auto before = m_devices.heard().size();
    EXPECT_TRUE(m_player->play());
    EXPECT_TRUE(hasHeard(int(before) + 1000));
}

TEST_F(PlaybackTest, PausesOnADeviceThatHasStoppedPlaying)
{
    make(counting(), "stalls");
    m_player->loop = true;
    m_player->play();
    ASSERT_TRUE(hasHeard(4000));
    QElapsedTimer elapsed;
    elapsed.start();
    m_player->pause();
    EXPECT_LT(elapsed.elapsed(), 2000);
    const auto before = m_devices.heard().size();
    EXPECT_TRUE(m_player->play());
    EXPECT_TRUE(hasHeard(int(before) + 1000));
}

TEST_F(PlaybackTest, ReportsItsStopWhenItsEndHasNotBeenReportedYet)
{
    make(counting(100));
    const int idle = threads();
    m_player->play();
    // Without an event loop, which would report the end.
    QElapsedTimer elapsed;
    elapsed.start();
    while (threads() > idle && elapsed.elapsed() < 10000) {
        QThread::msleep(1);
    }
    m_player->stop();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->stopped.count(), 1);
}

TEST_F(PlaybackTest, ReportsItsStopWhenItsErrorHasNotBeenReportedYet)
{
    make(counting(30000), "vanishes");
    const int idle = threads();
    ASSERT_TRUE(m_player->play());
    // No event loop runs meanwhile, which would report the error.
    QElapsedTimer elapsed;
    elapsed.start();
    while (threads() > idle && elapsed.elapsed() < 10000) {
        QThread::msleep(1);
    }
    ASSERT_EQ(threads(), idle);
    m_player->stop();
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->stopped.count(), 1);
}

TEST_F(PlaybackTest, StopsWithinTheCall)
{
    make(counting(30000));
    m_player->loop = true;
    const int idle = threads();
    ASSERT_TRUE(m_player->play());
    EXPECT_GT(threads(), idle);
    m_player->stop();
    EXPECT_EQ(threads(), idle);
}

TEST_F(PlaybackTest, RepeatsASoundAtItsPaceOnADeviceThatTakesEverythingAtOnce)
{
    const auto processorTime = [] { return std::clock() * 1000 / CLOCKS_PER_SEC; };
    make(counting(), "null");
    m_player->loop = true;
    ASSERT_TRUE(m_player->play());
    constexpr int wallMs = 600;
    const auto before = processorTime();
    QTest::qWait(wallMs);
    EXPECT_LT(processorTime() - before, wallMs / 4);
    m_player->stop();
}

TEST_F(PlaybackTest, EndsAtOnceOnADeviceThatTakesEverythingAtOnce)
{
    constexpr int seconds = 100;
    make(counting(seconds * rate), "null");
    ASSERT_TRUE(m_player->play());
    EXPECT_TRUE(m_end->hasEndedOnce());
}

TEST_F(PlaybackTest, RestartsAFadeWhoseStartWasNotHeardBeforeAPause)
{
    constexpr int fadeMs = 200;
    make(counting(30000), "hardware");
    m_player->usage = SimplePlayer::UsageMedia;
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    // The fade begins with the next frames that are written, which are not heard before the pause.
    m_player->setGain(0.0, fadeMs);
    ASSERT_TRUE(hasHeard(3000));
    m_player->pause();
    m_player->play();
    ASSERT_TRUE(m_end->hasEndedOnce());
    expectFade(m_devices.heard(), countingFloats(30000), 0.0, fadeMs);
}

class LostDeviceTest : public PlaybackTest, public testing::WithParamInterface<const char *>
{
};

INSTANTIATE_TEST_SUITE_P(Devices, LostDeviceTest,
                         testing::Values("vanishes", "unplugged", "underruns_dies", "chokes",
                                         "wants_sound", "suspends_forgets_dies"),
                         [](const auto &info) { return info.param; });

TEST_P(LostDeviceTest, IsReported)
{
    playOn(GetParam());
    ASSERT_EQ(m_end->failed.count(), 1);
    EXPECT_THAT(m_end->error(), testing::HasSubstr(std::string("The sound device \"") + GetParam() +
                                                   "\" has gone: "));
}

TEST_F(PlaybackTest, ConvertsFormatsThatADeviceDoesNotSupport)
{
    const int seconds44100 = 44100 / 4;
    const QString file = path("sine.wav");
    writeSound(file, wav, rate, sineSamples(rate / 4, rate, 1000));
    make(file, "fixed");
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(m_end->ended.count(), 1);
    const QByteArray bytes = m_devices.heardBytes(); // 16 bit stereo, then padding
    const int frames = bytes.size() / 4;
    EXPECT_THAT(frames, AllOf(Ge(seconds44100), Le(seconds44100 + 44100 / 10)));
    const auto *samples = reinterpret_cast<const qint16 *>(bytes.constData());
    EXPECT_GT(*std::max_element(samples, samples + bytes.size() / 2), 9000);
}

TEST_F(PlaybackTest, GivesTheDeviceTheRateAndTheChannelsOfTheSound)
{
    const QString file = path("stereo.wav");
    const auto samples = countingSamples(4000);
    writeSound(file, wav, 22050, samples, 2);
    make(file);
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end->hasEndedOnce());
    EXPECT_EQ(heard(), asFloats(samples));
}

TEST_F(PlaybackTest, StartsWithTheGainItWasGiven)
{
    make(counting());
    m_player->setGain(0.5, 1000);
    m_player->play();
    ASSERT_TRUE(m_end->hasEndedOnce());
    auto expected = countingFloats();
    for (float &sample : expected) {
        sample *= 0.5F;
    }
    EXPECT_EQ(heard(), expected);
}

TEST_F(PlaybackTest, ClampsTheGain)
{
    make(counting());
    m_player->setGain(2.0, 0);
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    m_player->setGain(-1.0, 0);
    ASSERT_TRUE(m_end->hasEndedOnce());
    const auto samples = m_devices.heard();
    const auto expected = countingFloats();
    EXPECT_TRUE(std::equal(samples.begin(), samples.begin() + 2000, expected.begin()));
    EXPECT_EQ(samples[soundFrames - 1], 0.0F);
}

TEST_F(PlaybackTest, SpreadsAChangeOfGainEvenlyOverItsTime)
{
    constexpr int fadeMs = 100;
    make(counting(30000));
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    m_player->setGain(0.25, fadeMs);
    ASSERT_TRUE(m_end->hasEndedOnce());
    const auto samples = heard();
    const auto full = countingFloats(30000);
    ASSERT_EQ(samples.size(), full.size());
    expectFade(samples, full, 0.25, fadeMs);
}

TEST_F(PlaybackTest, KeepsAFadeExactThroughAPause)
{
    constexpr int fadeMs = 200;
    make(counting(30000), "hardware");
    m_player->play();
    ASSERT_TRUE(hasHeard(2000));
    m_player->setGain(0.0, fadeMs);
    ASSERT_TRUE(hasHeard(10000));
    m_player->pause();
    m_player->play();
    ASSERT_TRUE(m_end->hasEndedOnce());
    expectFade(m_devices.heard(), countingFloats(30000), 0.0, fadeMs);
}
