// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTest.h"

using testing::ElementsAre;

namespace {

constexpr int soundMs = 300;
constexpr int longMs = 20000;
const QString standby = QStringLiteral("/powerManager/standby");
const QString resume = QStringLiteral("/powerManager/resume");

} // namespace

class PowerTest : public SoundTest
{
protected:
    void enqueueTone(const QString &id, int milliseconds = soundMs)
    {
        m_requester.enqueue(fileItem(id, toneFile(frequency, milliseconds)));
        EXPECT_EQ(m_requester.answer(), "");
    }

    void ask(const QString &path)
    {
        m_requester.invoke(path);
        EXPECT_EQ(m_requester.answer(), "");
    }
};

TEST_F(PowerTest, ANotificationInStandbyIsCancelledWithoutASound)
{
    start();
    ask(standby);
    enqueueTone("sound");
    EXPECT_TRUE(m_requester.waitFor("cancelled sound")) << m_host.log().toStdString();
    EXPECT_THAT(m_requester.responses(), ElementsAre("cancelled sound"));
    EXPECT_EQ(notifications().frames(), 0);
}

TEST_F(PowerTest, NotificationsSoundAgainAfterStandby)
{
    start();
    ask(standby);
    enqueueTone("refused");
    EXPECT_TRUE(m_requester.waitFor("cancelled refused"));
    ask(resume);
    enqueueTone("sound");
    EXPECT_TRUE(m_requester.waitFor("finished sound")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitFor("restored"));
    EXPECT_EQ(notifications().frames(), framesOf(soundMs));
}

TEST_F(PowerTest, StandbyCancelsPlayingAndWaitingSounds)
{
    start();
    enqueueTone("sounding", longMs);
    ASSERT_TRUE(m_requester.waitFor("started sounding"));
    enqueueTone("waiting");
    ask(standby);
    EXPECT_TRUE(m_requester.waitFor("cancelled sounding")) << m_host.log().toStdString();
    EXPECT_THAT(m_requester.responses(),
                ElementsAre("started sounding", "cancelled waiting", "cancelled sounding"));
}

TEST_F(PowerTest, StandbyRestoresTheMusic)
{
    start(withMusic());
    waitForMusic();
    enqueueTone("sound", longMs);
    ASSERT_TRUE(m_notificationDevice.waitForSound());
    ask(standby);
    ASSERT_TRUE(m_requester.waitFor("restored")) << m_host.log().toStdString();
    constexpr double settled = 0.3;
    const double restored = m_requester.momentOf("restored");
    ASSERT_TRUE(m_mainDevice.waitUntil(restored + 2 * settled));
    EXPECT_NEAR(music().level(restored + settled, restored + 2 * settled), toneLevel, 1);
    EXPECT_LT(notifications().span()->end, restored + settled);
}

TEST_F(PowerTest, WithoutAPowerManagerEverythingIsCancelled)
{
    startModules({playerModule(), "notifications", m_requester.module()});
    enqueueTone("first");
    EXPECT_TRUE(m_requester.waitFor("cancelled first")) << m_host.log().toStdString();
    enqueueTone("second");
    EXPECT_TRUE(m_requester.waitFor("cancelled second")) << m_host.log().toStdString();
    EXPECT_EQ(notifications().frames(), 0);
    EXPECT_EQ(stopHost(), 0) << m_host.log().toStdString();
}

TEST_F(PowerTest, WithoutAPlayerNotificationsSoundOnTheDefaultDevice)
{
    // Without the system's files, which may define a default.
    m_host.setEnvironment(
        "ALSA_CONFIG_PATH",
        m_host.writeFile("asound.conf", "pcm.default { type pulse device \"notif\" }\n"));
    startModules({"powermanager", "notifications", m_requester.module()});
    enqueueTone("sound");
    EXPECT_TRUE(m_requester.waitFor("finished sound")) << m_host.log().toStdString();
    EXPECT_TRUE(m_requester.waitFor("released"));
    EXPECT_EQ(notifications().frames(), framesOf(soundMs));
    EXPECT_EQ(stopHost(), 0) << m_host.log().toStdString();
}
