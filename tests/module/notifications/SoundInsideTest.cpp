// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The private parts of the sound controller: assertions that nothing outside leads to.

#include "modules/notifications/NotificationPlayer.h"
#include "NotificationsTest.h"

/// A friend of the controller.
class SoundInsideTest : public NotificationsTest
{
protected:
    SoundInsideTest()
        : m_player(&m_nodes, nullptr)
    {
        settle();
    }

    void setDucked() { m_player.m_audioDucked = true; }
    void setResourceHeld() { m_player.m_audioResource = true; }
    void setActive(const QString &id) { m_player.m_activePlaybackId = id; }

    void acquire() { m_player.continuePlayAudioMuted(); }
    void playFromQueue() { m_player.playItemFromQueue(); }
    void play()
    {
        NotificationPlayerItem item;
        m_player.playItem(item);
    }
    void end(const QString &id) { m_player.soundFinished(id, false, QString()); }

    QString activeId() const { return m_player.m_activePlaybackId; }
    bool timerRuns() const { return m_player.m_inactivityTimer.isActive(); }

private:
    CMNodes m_nodes;
    NotificationPlayer m_player;
};

using SoundInsideDeathTest = SoundInsideTest;

TEST_F(SoundInsideDeathTest, AcquiringWithoutDucking)
{
    EXPECT_DEATH(acquire(), "\"m_audioDucked == true\"");
}

TEST_F(SoundInsideDeathTest, TakingFromTheQueueWithoutTheResource)
{
    setDucked();
    EXPECT_DEATH(playFromQueue(), "\"m_audioResource == true\"");
}

TEST_F(SoundInsideDeathTest, PlayingWithoutDucking)
{
    EXPECT_DEATH(play(), "\"m_audioDucked == true\"");
}

TEST_F(SoundInsideDeathTest, PlayingWithoutTheResource)
{
    setDucked();
    EXPECT_DEATH(play(), "\"m_audioResource == true\"");
}

TEST_F(SoundInsideTest, ClearsTheActiveIdEvenWhenItsItemIsUnknown)
{
    setDucked();
    setResourceHeld();
    setActive("x"_s);
    end("x"_s);
    EXPECT_TRUE(activeId().isEmpty());
    EXPECT_EQ(
        logged(log4cplus::ERROR_LOG_LEVEL, "Id of stopped sound does not exists, ignoring. x"), 1);
    EXPECT_FALSE(timerRuns());
}
