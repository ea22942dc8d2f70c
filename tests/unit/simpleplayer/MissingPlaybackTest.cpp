// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The players without libtavo_playback: this program runs with a copy of their library that has no
// libtavo_playback beside it.

#include "EndSpy.h"
#include "support/LogCapture.h"
#include <simpleplayer/DataSimplePlayer.h>
#include <simpleplayer/StreamSimplePlayer.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using MakePlayer = std::function<std::unique_ptr<SimplePlayer>()>;

class MissingPlaybackTest : public testing::TestWithParam<MakePlayer>
{
protected:
    std::unique_ptr<SimplePlayer> m_player = GetParam()();
    EndSpy m_end{*m_player};
    LogCapture m_log{"SimplePlayer"};
};

INSTANTIATE_TEST_SUITE_P(Kinds, MissingPlaybackTest,
                         testing::Values(
                             [] {
                                 return std::make_unique<UriSimplePlayer>(
                                     QStringLiteral("chime.wav"), QStringLiteral("id"),
                                     QStringLiteral("plain"), nullptr);
                             },
                             [] {
                                 return std::make_unique<DataSimplePlayer>(
                                     QByteArray(), QStringLiteral("id"), QStringLiteral("plain"),
                                     nullptr);
                             },
                             [] {
                                 return std::make_unique<StreamSimplePlayer>(
                                     QStringLiteral("chime.fifo"),
                                     QStringLiteral("audio/L16;rate=48000"), QStringLiteral("id"),
                                     QStringLiteral("plain"), nullptr);
                             }));

TEST_P(MissingPlaybackTest, CannotPlayAndSaysWhyInTheLog)
{
    EXPECT_FALSE(m_player->play());

    settle();
    EXPECT_EQ(m_end.count(), 0);
    EXPECT_THAT(m_log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre(AllOf(StartsWith("Can't play id: "),
                                  HasSubstr("libtavo_playback.so: cannot open"))));
}

TEST_P(MissingPlaybackTest, ReportsAStopWithoutAStartOnce)
{
    m_player->setGain(0.5, 10);
    m_player->pause();
    m_player->stop();
    m_player->stop();
    EXPECT_EQ(m_end.count(), 0);

    EXPECT_TRUE(m_end.hasEndedOnce());
    EXPECT_EQ(m_end.stopped.count(), 1);
}
