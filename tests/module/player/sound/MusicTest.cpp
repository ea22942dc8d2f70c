// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/player/sound/SoundTest.h"

#include <algorithm>

namespace {
using testing::Gt;
using testing::SizeIs;

constexpr std::chrono::seconds timeout{15};

// The delays of 250 ms and 500 ms, and some time more.
constexpr int twoRetriesMs = 800;

class MusicTest : public SoundTest
{
};

TEST_F(MusicTest, RepeatsTheConfiguredMusic)
{
    constexpr int recordedMs = 5 * musicMs;
    Recording recording("main");
    listen(recordedMs);
    const auto steps = stepsAt(loudnessOf(recording.take()), level(1.0));
    EXPECT_THAT(steps, SizeIs(Gt(2U * musicMs / 10)));
    EXPECT_EQ(state().source(), music());
}

TEST_F(MusicTest, FallsSilentWhenStopped)
{
    constexpr int silentSteps = 10;
    Recording recording("main");
    listen();
    ASSERT_TRUE(stop().succeeds());
    EXPECT_FALSE(state().playing());
    listen();
    const auto loudness = loudnessOf(recording.take());
    EXPECT_THAT(stepsAt(loudness, level(1.0)), SizeIs(Gt(0U)));
    EXPECT_EQ(*std::max_element(loudness.end() - silentSteps, loudness.end()), 0.0);
}

TEST_F(MusicTest, PlaysTheLastSourceForARequestWithoutASource)
{
    ASSERT_TRUE(stop().succeeds());
    EXPECT_TRUE(play(QVariant()).succeeds());
    EXPECT_TRUE(state().playing());
    EXPECT_EQ(state().source(), music());
}

TEST_F(MusicTest, ReplacesThePlayingSource)
{
    const QString other = music() + QStringLiteral(".flac");
    writeSound(other, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, SoundServer::rate,
               sineSamples(SoundServer::rate, SoundServer::rate, 500));
    EXPECT_TRUE(play(TavoValue().setString_(other).__variant()).succeeds());
    EXPECT_TRUE(state().playing());
    EXPECT_EQ(state().source(), other);
}

TEST_F(MusicTest, AcceptsABareStringAsTheSource)
{
    EXPECT_TRUE(play(music()).succeeds());
    EXPECT_TRUE(state().playing());
}

TEST_F(MusicTest, StopsWhenTheNextSourceCannotBePlayed)
{
    const Request request = play(music() + QStringLiteral(".missing"));
    EXPECT_EQ(request.errorText(), "The music or its device can't be opened");
    EXPECT_FALSE(state().playing());
    EXPECT_EQ(state().error().toStdString(), request.errorText());
}

TEST_F(MusicTest, ClearsTheErrorWhenItPlaysAgain)
{
    ASSERT_FALSE(play(music() + QStringLiteral(".missing")).succeeds());
    ASSERT_TRUE(play(music()).succeeds());
    EXPECT_EQ(state().error(), "");
}

TEST_F(MusicTest, ReportsADeviceThatVanishesAndStillDucks)
{
    server().kill();
    EXPECT_TRUE(waitFor([] { return !state().playing(); }));
    EXPECT_NE(state().error(), "");
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 1);
    EXPECT_TRUE(duck("alarm").succeeds());
    EXPECT_TRUE(state().ducked());
}

TEST_F(MusicTest, ReportsADeviceThatIsMissingAndStillDucks)
{
    server().kill();
    ASSERT_TRUE(waitFor([] { return !state().playing(); }));
    EXPECT_FALSE(play(QVariant()).succeeds());
    EXPECT_NE(state().error(), "");
    EXPECT_TRUE(duck("alarm").succeeds());
}

TEST_F(MusicTest, IsHeardAgainOnceItsSoundServerIsBack)
{
    server().kill();
    ASSERT_TRUE(waitFor([] { return !state().playing(); }));
    server().startAgain();
    EXPECT_TRUE(waitFor([] { return state().playing(); }, timeout));
    EXPECT_EQ(state().error(), "");
    Recording recording("main");
    listen();
    EXPECT_THAT(stepsAt(loudnessOf(recording.take()), level(1.0)), SizeIs(Gt(0U)));
}

TEST_F(MusicTest, IsDuckedAfterARetryWhenItWasDuckedBefore)
{
    constexpr double ducked = 0.1;
    server().kill();
    ASSERT_TRUE(waitFor([] { return !state().playing(); }));
    ASSERT_TRUE(duck("alarm").succeeds());
    server().startAgain();
    Recording recording("main");
    ASSERT_TRUE(waitFor([] { return state().playing(); }, timeout));
    listen();
    const auto loudness = loudnessOf(recording.take());
    EXPECT_THAT(stepsAt(loudness, level(ducked)), SizeIs(Gt(0U)));
    EXPECT_LT(*std::max_element(loudness.begin(), loudness.end()), level(1.0) / 2);
}

TEST_F(MusicTest, IsNotTriedAgainAfterAStop)
{
    server().kill();
    ASSERT_TRUE(waitFor([] { return !state().playing(); }));
    ASSERT_TRUE(stop().succeeds());
    server().startAgain();
    listen(twoRetriesMs);
    EXPECT_FALSE(state().playing());
}

class FewRetriesTest : public SoundTest
{
protected:
    FewRetriesTest()
        : SoundTest({{"musicRetries", 2}})
    {
    }
};

TEST_F(FewRetriesTest, GiveUpAfterTheMaximumAndKeepTheError)
{
    server().kill();
    // The first failure and those of both retries.
    EXPECT_TRUE(waitFor([this] { return log().countAt(log4cplus::WARN_LOG_LEVEL) == 3; }, timeout));
    server().startAgain();
    listen(3 * twoRetriesMs);
    EXPECT_FALSE(state().playing());
    EXPECT_NE(state().error(), "");
}

TEST_F(FewRetriesTest, StartAnewWhenMusicIsRequested)
{
    server().kill();
    EXPECT_TRUE(waitFor([this] { return log().countAt(log4cplus::WARN_LOG_LEVEL) == 3; }, timeout));
    server().startAgain();
    ASSERT_TRUE(play(QVariant()).succeeds());
    server().kill();
    ASSERT_TRUE(waitFor([] { return !state().playing(); }));
    server().startAgain();
    EXPECT_TRUE(waitFor([] { return state().playing(); }, timeout));
}
} // namespace
