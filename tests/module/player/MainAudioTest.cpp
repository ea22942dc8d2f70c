// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/player/PlayerTest.h"

#include <limits>

namespace {
/// These tests open no device; the effects on the sound are tested with a sound server.
class MainAudioTest : public PlayerTest
{
};

TEST_F(MainAudioTest, StartsSilentAtFullVolume)
{
    settle();
    EXPECT_FALSE(state().playing());
    EXPECT_EQ(state().source(), "");
    EXPECT_EQ(state().error(), "");
    EXPECT_EQ(state().volume(), 1.0);
}

TEST_F(MainAudioTest, SetsTheVolume)
{
    EXPECT_TRUE(setVolume(TavoValue().setDouble_(0.25).__variant()).succeeds());
    EXPECT_EQ(state().volume(), 0.25);
}

TEST_F(MainAudioTest, AcceptsAMapAsARecord)
{
    EXPECT_TRUE(setVolume(QVariantMap{{"double", 0.25}}).succeeds());
    EXPECT_EQ(state().volume(), 0.25);
}

TEST_F(MainAudioTest, AcceptsABareNumberAsTheVolume)
{
    EXPECT_TRUE(setVolume(0).succeeds());
    EXPECT_EQ(state().volume(), 0.0);
}

TEST_F(MainAudioTest, KeepsTheVolumeWhenItDucks)
{
    ASSERT_TRUE(setVolume(0.5).succeeds());
    ASSERT_TRUE(duck("alarm").succeeds());
    EXPECT_EQ(state().volume(), 0.5);
}

TEST_F(MainAudioTest, RefusesAVolumeOutOfRange)
{
    EXPECT_EQ(setVolume(1.01).errorText(), "The volume must be a number from 0.0 to 1.0");
    EXPECT_FALSE(setVolume(-0.01).succeeds());
    EXPECT_FALSE(setVolume(std::numeric_limits<double>::quiet_NaN()).succeeds());
    EXPECT_EQ(state().volume(), 1.0);
}

TEST_F(MainAudioTest, RefusesAVolumeThatIsNotANumber)
{
    EXPECT_FALSE(setVolume("0.5").succeeds());
    EXPECT_FALSE(setVolume(QVariant()).succeeds());
    EXPECT_FALSE(setVolume(TavoValue().setString_("0.5").__variant()).succeeds());
    EXPECT_EQ(state().volume(), 1.0);
}

TEST_F(MainAudioTest, RefusesASourceThatIsNotAString)
{
    EXPECT_EQ(play(7).errorText(), "The source must be a text");
}

TEST_F(MainAudioTest, RefusesToPlayWithoutAnyMusic)
{
    const Request request = play(QVariant());
    EXPECT_EQ(request.errorText(), "There is no music");
    EXPECT_EQ(request.error().name(), "Player");
}

TEST_F(MainAudioTest, AnswersAStopWhenNothingPlays)
{
    EXPECT_TRUE(stop().succeeds());
}

TEST_F(MainAudioTest, ReportsMusicThatIsMissing)
{
    play(TavoValue().setString_("/nowhere/music.wav").__variant()).waitForReply();
    EXPECT_TRUE(waitFor([] { return !state().error().isEmpty(); }));
    EXPECT_FALSE(state().playing());
    EXPECT_EQ(state().source(), "/nowhere/music.wav");
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 1);
}

class MissingMusicTest : public PlayerTest
{
protected:
    MissingMusicTest()
        : PlayerTest({{"music", "/nowhere/music.wav"}})
    {
    }
};

TEST_F(MissingMusicTest, StillDucksWhenTheConfiguredMusicIsMissing)
{
    EXPECT_TRUE(waitFor([] { return !state().error().isEmpty(); }));
    EXPECT_FALSE(state().playing());
    EXPECT_TRUE(duck("alarm").succeeds());
    EXPECT_TRUE(state().ducked());
    EXPECT_TRUE(unduck("alarm").succeeds());
    EXPECT_FALSE(state().ducked());
}
} // namespace
