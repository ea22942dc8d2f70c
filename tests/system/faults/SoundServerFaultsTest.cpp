// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ProcessState.h"
#include "system/sound/SoundTest.h"

#include <QElapsedTimer>
#include <QProcess>

#include <cmath>
#include <csignal>

using testing::ElementsAre;

namespace {

constexpr int shortMs = 300;
constexpr int longMs = 20'000;

// For how long the music is measured.
constexpr double measured = 0.4;
constexpr int timeoutMs = 20'000;

} // namespace

/// The sound server, or one of its devices, goes away while a host plays on it.
class SoundServerFaultsTest : public SoundTest
{
protected:
    void startWithMusicAndSound()
    {
        start(withMusic());
        waitForMusic();
        m_before = ProcessState::of(m_host.processId());
        m_requester.enqueue(fileItem("sound", toneFile(frequency, longMs)));
        ASSERT_TRUE(m_requester.waitFor("started sound")) << m_host.log().toStdString();
        ASSERT_TRUE(m_notificationDevice.waitForSound());
    }

    /// Expects that the music is as loud as before. A busy machine may make it silent for a
    /// moment, so this measures until it is loud; music that stays ducked or silent never is.
    static void expectLoud(Listener &music)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        double level = 0;
        while (!elapsed.hasExpired(timeoutMs)) {
            const double begin = monotonicNow();
            ASSERT_TRUE(music.waitUntil(begin + measured));
            level = music.heard().level(begin, begin + measured);
            if (std::abs(level - toneLevel) < 1) {
                return;
            }
        }
        ADD_FAILURE() << "The music's level is " << level << " dB";
    }

    /// Expects that a notification is heard whole, with the music as loud as before and after
    /// it.
    void expectAllHeard()
    {
        Listener music("main");
        Listener notifications("notifications");
        expectLoud(music);
        m_requester.enqueue(fileItem("afterwards", toneFile(frequency, shortMs)));
        ASSERT_TRUE(m_requester.waitFor("finished afterwards")) << m_host.log().toStdString();
        ASSERT_TRUE(m_requester.waitForQuiet());
        expectLoud(music);
        EXPECT_EQ(notifications.heard().frames(), framesOf(shortMs));
        EXPECT_EQ(m_requester.ends("sound"), 1);
        EXPECT_EQ(m_requester.ends("afterwards"), 1);
    }

    void expectSettled() const
    {
        EXPECT_TRUE(waitForSettled(m_host.processId(), m_before))
            << "now " << ProcessState::of(m_host.processId()) << ", before " << m_before;
    }

    /// The volumes that the server keeps for its devices.
    static QByteArray volumes()
    {
        QByteArray volumes;
        for (const char *device : {"notif", "main"}) {
            volumes += SoundServer::ask({"get-sink-volume", device}) +
                       SoundServer::ask({"get-sink-mute", device});
        }
        return volumes;
    }

    static void removeNotificationDevice()
    {
        for (const QByteArray &module :
             SoundServer::ask({"list", "short", "modules"}).split('\n')) {
            if (module.contains("sink_name=notif")) {
                SoundServer::ask({"unload-module", module.split('\t').first()});
            }
        }
    }

    ProcessState m_before;
};

TEST_F(SoundServerFaultsTest, AllIsHeardAgainAfterTheServerWasKilledAndStartedAgain)
{
    startWithMusicAndSound();
    m_server.kill();
    EXPECT_TRUE(m_requester.waitFor("failed sound")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitForQuiet());
    m_server.startAgain();
    expectAllHeard();
    expectSettled();
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(SoundServerFaultsTest, WhatWaitsWhileTheServerIsAwayFailsAndAllIsHeardAgainAfterwards)
{
    startWithMusicAndSound();
    m_requester.enqueue(fileItem("waiting", toneFile(frequency, shortMs)));
    m_server.kill();
    EXPECT_TRUE(m_requester.waitFor("failed waiting")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitForQuiet());
    m_requester.enqueue(fileItem("meanwhile", toneFile(frequency, shortMs)));
    EXPECT_TRUE(m_requester.waitFor("failed meanwhile"));
    EXPECT_TRUE(m_requester.waitForQuiet());
    EXPECT_THAT(m_requester.responses(),
                ElementsAre("started sound", "failed sound", "failed waiting", "failed meanwhile"));
    m_server.startAgain();
    expectAllHeard();
    expectSettled();
}

TEST_F(SoundServerFaultsTest, APausedSoundFailsWithTheServerAndAllIsHeardAgainAfterwards)
{
    startWithMusicAndSound();
    m_requester.enqueue(fileItem("urgent", toneFile(2 * frequency, longMs), 3));
    ASSERT_TRUE(m_requester.waitFor("started urgent"));
    m_server.kill();
    EXPECT_TRUE(m_requester.waitFor("failed urgent")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitFor("failed sound")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitForQuiet());
    m_server.startAgain();
    expectAllHeard();
    expectSettled();
}

TEST_F(SoundServerFaultsTest, ADeviceThatIsRemovedAloneEndsItsSoundOnceAndTheMusicIsRestored)
{
    start(withMusic());
    waitForMusic();
    constexpr int whileItIsRemovedMs = 1500;
    m_requester.enqueue(fileItem("sound", toneFile(frequency, whileItIsRemovedMs)));
    ASSERT_TRUE(m_requester.waitFor("started sound"));
    ASSERT_TRUE(m_notificationDevice.waitForSound());
    removeNotificationDevice();
    // The server may move the sound to another device; then it ends normally.
    EXPECT_TRUE(m_requester.waitForEnd("sound")) << m_host.log().toStdString();
    ASSERT_TRUE(m_requester.waitForQuiet());
    expectLoud(m_mainDevice);
    EXPECT_EQ(m_requester.ends("sound"), 1);
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(SoundServerFaultsTest, AHostThatStopsWhileTheMusicIsDuckedLeavesTheServerAsItWas)
{
    const QByteArray before = volumes();
    startWithMusicAndSound();
    EXPECT_TRUE(m_requester.has("ducked"));
    EXPECT_EQ(stopHost(), 0);
    EXPECT_EQ(volumes().toStdString(), before.toStdString());
    EXPECT_EQ(SoundServer::ask({"list", "short", "sink-inputs"}).toStdString(), "");
}

TEST_F(SoundServerFaultsTest, AHostThatIsKilledWhileTheMusicIsDuckedLeavesTheServerAsItWas)
{
    const QByteArray before = volumes();
    startWithMusicAndSound();
    EXPECT_TRUE(m_requester.has("ducked"));
    m_host.sendSignal(SIGKILL);
    m_host.waitForExit();
    EXPECT_EQ(volumes().toStdString(), before.toStdString());
}
