// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The samples of a sound that a real sound server plays.

#include "support/sound/SoundServer.h"

#include "EndSpy.h"
#include "support/sound/SoundFiles.h"
#include <simpleplayer/StreamSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <utility>

class SoundServerTest : public testing::Test
{
protected:
    static constexpr int soundFrames = 28000;

    SoundServerTest()
    {
        // Both channels are equal, so that each frame is one number.
        std::vector<short> samples;
        for (const short sample : countingSamples(soundFrames)) {
            samples.insert(samples.end(), 2, sample);
        }
        writeSound(m_file, SF_FORMAT_WAV | SF_FORMAT_PCM_16, SoundServer::rate, samples, 2);
    }

    std::unique_ptr<UriSimplePlayer> makePlayer(const char *device, int usage)
    {
        auto player = std::make_unique<UriSimplePlayer>(m_file, QStringLiteral("id"),
                                                        QString::fromLatin1(device), nullptr);
        player->usage = usage;
        return player;
    }

    static std::vector<short> leftChannel(const QByteArray &recording)
    {
        constexpr int frameBytes = SoundServer::channels * int(sizeof(short));
        std::vector<short> samples(std::size_t(recording.size() / frameBytes));
        for (std::size_t i = 0; i < samples.size(); ++i) {
            std::memcpy(&samples[i], recording.constData() + i * frameBytes, sizeof(short));
        }
        return samples;
    }

    /// The left channel without its silence.
    static std::vector<short> sounding(const QByteArray &recording)
    {
        std::vector<short> samples = leftChannel(recording);
        samples.erase(std::remove(samples.begin(), samples.end(), 0), samples.end());
        return samples;
    }

    /// Waits until the recording has all that was played, and returns it.
    static std::vector<short> take(Recording &recording)
    {
        constexpr int monitorMs = 300;
        QTest::qWait(monitorMs);
        return sounding(recording.take());
    }

    SoundServer m_server;
    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath(QStringLiteral("counting.wav"));
};

namespace {

/// The places where a number is not followed by the next one.
std::vector<std::pair<short, short>> jumps(const std::vector<short> &samples)
{
    std::vector<std::pair<short, short>> found;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (samples[i] != samples[i - 1] + 1) {
            found.emplace_back(samples[i - 1], samples[i]);
        }
    }
    return found;
}

} // namespace

class SoundServerUsageTest : public SoundServerTest, public testing::WithParamInterface<int>
{
};

INSTANTIATE_TEST_SUITE_P(Usages, SoundServerUsageTest,
                         testing::Values(SimplePlayer::UsageMedia, SimplePlayer::UsageNotification),
                         [](const auto &info) {
                             return info.param == SimplePlayer::UsageMedia ? "Media"
                                                                           : "Notification";
                         });

TEST_P(SoundServerUsageTest, PlaysEveryFrameOnceAndInOrder)
{
    Recording recording(QStringLiteral("notifications"));
    const auto player = makePlayer("notifications", GetParam());
    EndSpy end(*player);
    ASSERT_TRUE(player->play());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(end.ended.count(), 1) << end.error();
    EXPECT_EQ(take(recording), countingSamples(soundFrames));
}

TEST_P(SoundServerUsageTest, GoesOnAfterPausesWithoutLosingOrRepeatingAFrame)
{
    Recording recording(QStringLiteral("notifications"));
    const auto player = makePlayer("notifications", GetParam());
    EndSpy end(*player);
    for (const int ms : {60, 130, 97}) {
        ASSERT_TRUE(player->play());
        QTest::qWait(ms);
        player->pause();
        EXPECT_EQ(end.count(), 0);
    }
    ASSERT_TRUE(player->play());
    ASSERT_TRUE(end.hasEndedOnce());
    const auto samples = take(recording);
    EXPECT_EQ(jumps(samples), (std::vector<std::pair<short, short>>()));
    EXPECT_EQ(samples.size(), std::size_t(soundFrames));
}

TEST_P(SoundServerUsageTest, RepeatsWithoutAGap)
{
    Recording recording(QStringLiteral("main"));
    const auto player = makePlayer("main", GetParam());
    player->loop = true;
    ASSERT_TRUE(player->play());
    QTest::qWait(1500);
    player->stop();
    const QByteArray bytes = recording.take();
    const auto samples = sounding(bytes);
    ASSERT_GT(samples.size(), std::size_t(2 * soundFrames));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(samples[i], 1 + int(i) % soundFrames) << "at frame " << i;
    }

    // A busy machine may cause gaps within the sound, but there is never one at its end.
    const auto all = leftChannel(bytes);
    int repetitions = 0;
    for (auto last = all.begin(); last + 1 < all.end(); ++last) {
        if (*last != soundFrames) {
            continue;
        }
        EXPECT_EQ(*(last + 1), 1);
        ++repetitions;
    }
    EXPECT_GE(repetitions, 2);
}

TEST_F(SoundServerTest, PlaysOnItsDeviceOnly)
{
    Recording other(QStringLiteral("main"));
    const auto player = makePlayer("notifications", SimplePlayer::UsageNotification);
    EndSpy end(*player);
    ASSERT_TRUE(player->play());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(take(other), std::vector<short>());
}

TEST_F(SoundServerTest, EndsWhenTheLastFrameHasBeenPlayed)
{
    Recording recording(QStringLiteral("notifications"));
    const auto player = makePlayer("notifications", SimplePlayer::UsageNotification);
    EndSpy end(*player);
    QElapsedTimer elapsed;
    elapsed.start();
    ASSERT_TRUE(player->play());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_GE(elapsed.elapsed(), soundFrames * 1000 / SoundServer::rate);
}

TEST_F(SoundServerTest, PlaysABriefSoundCompletely)
{
    writeSound(m_file, SF_FORMAT_WAV | SF_FORMAT_PCM_16, SoundServer::rate, countingSamples(100));
    Recording recording(QStringLiteral("notifications"));
    const auto player = makePlayer("notifications", SimplePlayer::UsageNotification);
    EndSpy end(*player);
    ASSERT_TRUE(player->play());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(take(recording), countingSamples(100));
}

TEST_F(SoundServerTest, PlaysSeveralSoundsAtOnce)
{
    const auto music = makePlayer("main", SimplePlayer::UsageMedia);
    const auto notification = makePlayer("main", SimplePlayer::UsageNotification);
    EndSpy musicEnd(*music);
    EndSpy notificationEnd(*notification);
    ASSERT_TRUE(music->play());
    ASSERT_TRUE(notification->play());
    EXPECT_TRUE(musicEnd.hasEndedOnce());
    EXPECT_TRUE(notificationEnd.hasEndedOnce());
    EXPECT_EQ(musicEnd.ended.count() + notificationEnd.ended.count(), 2);
}

TEST_F(SoundServerTest, ReportsAServerThatVanishes)
{
    const auto player = makePlayer("main", SimplePlayer::UsageMedia);
    player->loop = true;
    EndSpy end(*player);
    ASSERT_TRUE(player->play());
    QTest::qWait(100);
    m_server.kill();
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(end.failed.count(), 1);
}

TEST_F(SoundServerTest, CannotPlayWithoutTheServer)
{
    m_server.kill();
    const auto player = makePlayer("main", SimplePlayer::UsageMedia);
    EndSpy end(*player);
    // On a slow machine, play() returns before the failure, which is then reported.
    if (player->play()) {
        ASSERT_TRUE(end.hasEndedOnce());
        EXPECT_EQ(end.failed.count(), 1);
    }
}
