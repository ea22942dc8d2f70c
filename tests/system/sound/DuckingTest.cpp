// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTest.h"

using testing::AnyOf;
using testing::ElementsAre;

namespace {

constexpr int notificationMs = 1200;
constexpr double duckedLevel = SoundTest::toneLevel - 20; // the player's default attenuation
constexpr double tolerance = 1;                           // dB

// The sound that the device has buffered when a fade begins, the fade, and some hundredths of a
// second, because the devices' clocks are not known exactly.
constexpr double settled = 0.3;

} // namespace

class DuckingTest : public SoundTest
{
protected:
    /// Plays a notification while music plays.
    void playOverMusic()
    {
        start(withMusic());
        waitForMusic();
        m_requester.enqueue(fileItem("sound", toneFile(frequency, notificationMs)));
        ASSERT_TRUE(m_requester.waitFor("finished sound")) << m_host.log().toStdString();
        ASSERT_TRUE(m_requester.waitFor("restored")) << m_host.log().toStdString();
    }

    /// Expects that both services were requested once and released. The order of the releases
    /// is open, since they are requests to different threads.
    void expectOneSequence()
    {
        ASSERT_TRUE(m_requester.waitFor("released"));
        EXPECT_THAT(m_requester.changes(),
                    AnyOf(ElementsAre("ducked", "acquired", "released", "restored"),
                          ElementsAre("ducked", "acquired", "restored", "released")));
    }
};

TEST_F(DuckingTest, TheMusicIsQuietWhileANotificationSounds)
{
    playOverMusic();
    const auto sounding = notifications().span();
    ASSERT_TRUE(sounding);
    EXPECT_NEAR(music().level(sounding->begin - 2 * settled, sounding->begin - settled), toneLevel,
                tolerance);
    EXPECT_NEAR(music().level(sounding->begin + settled, sounding->end), duckedLevel, tolerance);
}

TEST_F(DuckingTest, TheMusicIsRestoredAfterANotification)
{
    playOverMusic();
    const double restored = m_requester.momentOf("restored");
    ASSERT_TRUE(m_mainDevice.waitUntil(restored + 3 * settled));
    EXPECT_NEAR(music().level(restored + settled, restored + 3 * settled), toneLevel, tolerance);
}

TEST_F(DuckingTest, TheMusicIsDuckedBeforeTheResourceIsAcquired)
{
    playOverMusic();
    expectOneSequence();
}

TEST_F(DuckingTest, TheMusicStaysDuckedBetweenTheNotificationsOfABurst)
{
    start(withMusic());
    waitForMusic();
    for (const char *id : {"first", "second", "third"}) {
        m_requester.enqueue(fileItem(id, toneFile(frequency, 300)));
    }
    ASSERT_TRUE(m_requester.waitFor("finished third")) << m_host.log().toStdString();
    ASSERT_TRUE(m_requester.waitFor("restored"));
    expectOneSequence();
}
