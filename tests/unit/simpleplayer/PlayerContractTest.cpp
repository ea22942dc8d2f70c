// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The guarantees of every kind of player.

#include "PlayerTest.h"
#include <simpleplayer/DataSimplePlayer.h>
#include <simpleplayer/FakePlayer.h>
#include <simpleplayer/StreamSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <memory>

namespace {

enum class Kind { Uri, Data, Stream, RawStream, Fake };

const char *nameOf(Kind kind)
{
    constexpr const char *names[] = {"Uri", "Data", "Stream", "RawStream", "Fake"};
    return names[int(kind)];
}

} // namespace

class PlayerContractTest : public PlayerTest, public testing::WithParamInterface<Kind>
{
protected:
    std::unique_ptr<SimplePlayer> makePlayer(const QString &device)
    {
        const QString id = QStringLiteral("id");
        const QString file = counting();
        switch (GetParam()) {
        case Kind::Uri:
            return std::make_unique<UriSimplePlayer>(file, id, device, nullptr);
        case Kind::Data:
            return std::make_unique<DataSimplePlayer>(readFile(file), id, device, nullptr);
        case Kind::Stream:
            return std::make_unique<StreamSimplePlayer>(file, QStringLiteral("audio/wav"), id,
                                                        device, nullptr);
        case Kind::RawStream:
            return std::make_unique<StreamSimplePlayer>(
                file, QStringLiteral("audio/x-raw;format=S16LE;rate=48000"), id, device, nullptr);
        case Kind::Fake:
            break;
        }
        return std::make_unique<FakePlayer>(id, nullptr);
    }

    std::unique_ptr<SimplePlayer> m_player = makePlayer(QStringLiteral("plain"));
    EndSpy m_end{*m_player};
};

INSTANTIATE_TEST_SUITE_P(Kinds, PlayerContractTest,
                         testing::Values(Kind::Uri, Kind::Data, Kind::Stream, Kind::RawStream,
                                         Kind::Fake),
                         [](const auto &info) { return nameOf(info.param); });

TEST_P(PlayerContractTest, EndsOnceByItself)
{
    ASSERT_TRUE(m_player->play());
    ASSERT_TRUE(m_end.hasEndedOnce());
    EXPECT_EQ(m_end.ended[0][0].toString(), "id");
}

TEST_P(PlayerContractTest, ReportsNothingFromInsidePlayPauseOrStop)
{
    m_player->play();
    EXPECT_EQ(m_end.count(), 0);
    m_player->pause();
    EXPECT_EQ(m_end.count(), 0);
    m_player->stop();
    EXPECT_EQ(m_end.count(), 0);
    EXPECT_TRUE(m_end.hasEndedOnce());
}

TEST_P(PlayerContractTest, ReportsThatItWasStopped)
{
    m_player->loop = true;
    m_player->play();
    m_player->stop();
    ASSERT_TRUE(m_end.hasEndedOnce());
    ASSERT_EQ(m_end.stopped.count(), 1);
    EXPECT_EQ(m_end.stopped[0][0].toString(), "id");
}

TEST_P(PlayerContractTest, ReportsAStopWithoutAStart)
{
    m_player->stop();
    ASSERT_TRUE(m_end.hasEndedOnce());
    EXPECT_EQ(m_end.stopped.count(), 1);
}

TEST_P(PlayerContractTest, ReportsAStopInAPause)
{
    m_player->loop = true;
    m_player->play();
    m_player->pause();
    m_player->stop();
    ASSERT_TRUE(m_end.hasEndedOnce());
    EXPECT_EQ(m_end.stopped.count(), 1);
}

TEST_P(PlayerContractTest, IgnoresASecondStop)
{
    m_player->stop();
    m_player->stop();
    ASSERT_TRUE(m_end.hasEndedOnce());
    m_player->stop();
    settle();
    EXPECT_EQ(m_end.count(), 1);
}

TEST_P(PlayerContractTest, ReportsNoStopAfterItsEnd)
{
    m_player->play();
    ASSERT_TRUE(m_end.hasEndedOnce());
    m_player->stop();
    settle();
    EXPECT_EQ(m_end.count(), 1);
}

TEST_P(PlayerContractTest, CannotPlayAfterItsEnd)
{
    m_player->play();
    ASSERT_TRUE(m_end.hasEndedOnce());
    EXPECT_FALSE(m_player->play());
    settle();
    EXPECT_EQ(m_end.count(), 1);
}

TEST_P(PlayerContractTest, ReportsNothingAfterARefusedPlayEvenIfItWasStoppedBefore)
{
    m_player->stop();
    EXPECT_FALSE(m_player->play());
    settle();
    EXPECT_EQ(m_end.count(), 0);
}

TEST_P(PlayerContractTest, GoesOnPlayingWhenPlayedAgain)
{
    EXPECT_TRUE(m_player->play());
    EXPECT_TRUE(m_player->play());
    EXPECT_TRUE(m_end.hasEndedOnce());
    EXPECT_EQ(m_end.ended.count(), 1);
}

TEST_P(PlayerContractTest, IgnoresAPauseBeforeItsStart)
{
    m_player->pause();
    EXPECT_TRUE(m_player->play());
    ASSERT_TRUE(m_end.hasEndedOnce());
    EXPECT_EQ(m_end.ended.count(), 1);
}

TEST_P(PlayerContractTest, ReportsAnEndDuringAPauseWhenItIsResumed)
{
    m_player->play();
    m_player->pause();
    settle();
    EXPECT_EQ(m_end.count(), 0);
    m_player->play();
    ASSERT_TRUE(m_end.hasEndedOnce());
    EXPECT_EQ(m_end.ended.count(), 1);
}

TEST_P(PlayerContractTest, ReportsNothingOnceDestroyed)
{
    m_player->play();
    m_player->stop();
    m_player.reset();
    settle();
    EXPECT_EQ(m_end.count(), 0);
}

TEST_P(PlayerContractTest, RepeatsUntilStopped)
{
    m_player->loop = true;
    m_player->play();
    if (GetParam() != Kind::Fake) {
        ASSERT_TRUE(hasHeard(2 * soundFrames));
    }
    settle();
    EXPECT_EQ(m_end.count(), 0);
    m_player->stop();
    ASSERT_TRUE(m_end.hasEndedOnce());
    EXPECT_EQ(m_end.stopped.count(), 1);
}

TEST_P(PlayerContractTest, ReadsTheLoopFlagAtTheFirstStartOnly)
{
    m_player->loop = true;
    m_player->play();
    m_player->pause();
    m_player->loop = false;
    m_player->play();
    if (GetParam() != Kind::Fake) {
        ASSERT_TRUE(hasHeard(2 * soundFrames));
    }
    settle();
    EXPECT_EQ(m_end.count(), 0);
}

/// Every kind of player that opens a device. A FakePlayer can't fail to start.
class RefusedPlayTest : public PlayerContractTest
{
};

INSTANTIATE_TEST_SUITE_P(Kinds, RefusedPlayTest,
                         testing::Values(Kind::Uri, Kind::Data, Kind::Stream, Kind::RawStream),
                         [](const auto &info) { return nameOf(info.param); });

TEST_P(RefusedPlayTest, ReportsNoEndWhateverIsCalledAfterwards)
{
    const auto player = makePlayer(QStringLiteral("nowhere"));
    EndSpy end(*player);
    EXPECT_FALSE(player->play());
    player->pause();
    EXPECT_FALSE(player->play());
    player->stop();
    settle();
    EXPECT_EQ(end.count(), 0);
}

TEST_P(RefusedPlayTest, ReportsNoEndWhenItCannotBeResumed)
{
    const auto player = makePlayer(QStringLiteral("alternates"));
    EndSpy end(*player);
    ASSERT_TRUE(player->play());
    player->pause();
    EXPECT_FALSE(player->play());
    player->stop();
    settle();
    EXPECT_EQ(end.count(), 0);
}
