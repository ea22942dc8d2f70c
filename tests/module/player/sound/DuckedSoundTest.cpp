// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/player/sound/SoundTest.h"

#include <algorithm>

namespace {
using testing::ElementsAre;
using testing::Ge;
using testing::SizeIs;

class DuckedSoundTest : public SoundTest
{
protected:
    using SoundTest::SoundTest;

    /// Plays the music for a while before, during and after it is ducked.
    static void listenToDucking()
    {
        listen();
        EXPECT_TRUE(duck("alarm").succeeds());
        listen();
        EXPECT_TRUE(unduck("alarm").succeeds());
        listen();
    }
};

TEST_F(DuckedSoundTest, FallsByTwentyDecibelsAndReturns)
{
    const double full = level(1.0);
    const double ducked = level(0.1);
    Recording recording("main");
    listenToDucking();
    EXPECT_THAT(levelsOf(loudnessOf(recording.take()), {full, ducked}),
                ElementsAre(full, ducked, full));
}

TEST_F(DuckedSoundTest, ReturnsToTheUsersVolume)
{
    const double full = level(1.0);
    const double half = level(0.5);
    const double ducked = level(0.05);
    Recording recording("main");
    listen();
    ASSERT_TRUE(setVolume(0.5).succeeds());
    listenToDucking();
    EXPECT_THAT(levelsOf(loudnessOf(recording.take()), {full, half, ducked}),
                ElementsAre(full, half, ducked, half));
    EXPECT_EQ(state().volume(), 0.5);
}

TEST_F(DuckedSoundTest, FollowsTheVolumeWhileDucked)
{
    const double full = level(1.0);
    const double ducked = level(0.1);
    const double duckedHalf = level(0.05);
    Recording recording("main");
    listen();
    ASSERT_TRUE(duck("alarm").succeeds());
    listen();
    ASSERT_TRUE(setVolume(0.5).succeeds());
    listen();
    EXPECT_THAT(levelsOf(loudnessOf(recording.take()), {full, level(0.5), ducked, duckedHalf}),
                ElementsAre(full, ducked, duckedHalf));
}

class SilentStartTest : public SoundTest
{
protected:
    SilentStartTest()
        : SoundTest({{"music", ""}})
    {
    }
};

TEST_F(SilentStartTest, StartsMusicDuckedThatIsRequestedWhileDucked)
{
    ASSERT_TRUE(duck("alarm").succeeds());
    Recording recording("main");
    ASSERT_TRUE(play(music()).succeeds());
    listen();
    const auto loudness = loudnessOf(recording.take());
    EXPECT_THAT(levelsOf(loudness, {level(0.1)}), ElementsAre(level(0.1)));
    EXPECT_LT(*std::max_element(loudness.begin(), loudness.end()), level(0.15));
}

class ConfiguredDuckingTest : public DuckedSoundTest
{
protected:
    ConfiguredDuckingTest()
        : DuckedSoundTest({{"duckingAttenuation", -6.0}, {"duckingFade", 300}})
    {
    }
};

TEST_F(ConfiguredDuckingTest, FallsByTheConfiguredAttenuationWithinTheConfiguredTime)
{
    const double full = level(1.0);
    const double ducked = level(std::pow(10.0, -6.0 / 20.0));
    Recording recording("main");
    listenToDucking();
    const std::vector<double> loudness = loudnessOf(recording.take());
    EXPECT_THAT(levelsOf(loudness, {full, ducked}), ElementsAre(full, ducked, full));
    // Two fades of 30 steps each, without the steps within 1 dB of either end. With the default of
    // 40 ms there would be fewer than six.
    const auto between = stepsAt(loudness, std::sqrt(full * ducked));
    EXPECT_THAT(between, SizeIs(Ge(10U)));
}

TEST_F(ConfiguredDuckingTest, FallsByTheAttenuationThatAReloadSetsWhileDucked)
{
    const double before = level(std::pow(10.0, -6.0 / 20.0));
    const double after = level(0.1);
    ASSERT_TRUE(duck("alarm").succeeds());
    Recording recording("main");
    listen();
    reconfigure({{"duckingAttenuation", -20.0}});
    listen();
    EXPECT_THAT(levelsOf(loudnessOf(recording.take()), {before, after}),
                ElementsAre(before, after));
}
} // namespace
