// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The module with scripted players.

#include "../PlayerTest.h"
#include "support/scripted/ScriptedPlayers.h"

class EndedMusicTest : public PlayerTest
{
protected:
    ~EndedMusicTest() override { ScriptedPlayers::instance().reset(); }

    static ScriptedPlayer *start(const QString &source)
    {
        EXPECT_TRUE(play(source).succeeds());
        return ScriptedPlayers::instance().find(source);
    }
};

TEST_F(EndedMusicTest, SaysThatNothingPlays)
{
    ScriptedPlayer *music = start("music.wav");
    ASSERT_TRUE(state().playing());
    music->reportEnded();
    settle();
    EXPECT_FALSE(state().playing());
    EXPECT_EQ(state().error(), "");
    EXPECT_FALSE(music->isAlive());
}

TEST_F(EndedMusicTest, CanBeStartedAgain)
{
    start("music.wav")->reportEnded();
    EXPECT_TRUE(play(QString()).succeeds());
    EXPECT_TRUE(state().playing());
    EXPECT_EQ(state().source(), "music.wav");
}

TEST_F(EndedMusicTest, GoesOnWhenItIsStartedWhileItPlays)
{
    ScriptedPlayer *music = start("music.wav");
    EXPECT_TRUE(play(QString()).succeeds());
    EXPECT_TRUE(music->isAlive());
    EXPECT_EQ(music->plays, 1);
}

TEST_F(EndedMusicTest, SaysWhyAFileFailed)
{
    start("music.wav")->reportError("\"music.wav\" is cut off");
    settle();
    EXPECT_EQ(state().error(), "\"music.wav\" is cut off");
}

TEST_F(EndedMusicTest, DoesNotSayWhatAServerAnswered)
{
    for (const char *reason : {"Connection refused", "the server is too slow", "is cut off"}) {
        start("http://localhost/music.wav")->reportError(reason);
        settle();
        EXPECT_EQ(state().error(), "The music can't be fetched or played");
    }
}
