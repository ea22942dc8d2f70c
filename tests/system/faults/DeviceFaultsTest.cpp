// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"

using testing::ElementsAre;

/// Notifications play on a device that is gone after 4000 frames. A short sound ends before.
class VanishingDeviceTest : public FaultTest
{
protected:
    void SetUp() override { start({{"notificationsDevice", "vanishes"}}); }
};

TEST_F(VanishingDeviceTest, FailsTheSoundOnceAndTheNextOneOpensItAgain)
{
    m_requester.enqueue(fileItem("long", soundFile("long.wav", longMs)));
    EXPECT_TRUE(m_requester.waitFor("failed long"));
    EXPECT_TRUE(m_host.waitForLog("The sound device \"vanishes\" has gone"));
    EXPECT_THAT(m_requester.responses(), ElementsAre("started long", "failed long"));
    expectAsGoodAsNew();
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(VanishingDeviceTest, FailsThePlayingSoundAndPlaysTheWaitingOne)
{
    m_requester.enqueue(fileItem("long", soundFile("long.wav", longMs)));
    m_requester.enqueue(fileItem("waiting", soundFile("waiting.wav", shortMs)));
    EXPECT_TRUE(m_requester.waitFor("finished waiting"));
    EXPECT_THAT(m_requester.responses(),
                ElementsAre("started long", "failed long", "started waiting", "finished waiting"));
    expectAsGoodAsNew();
}

TEST_F(VanishingDeviceTest, FailsALoop)
{
    QJsonObject item = fileItem("loop", soundFile("loop.wav", shortMs));
    item.insert("loop", true);
    m_requester.enqueue(item);
    EXPECT_TRUE(m_requester.waitFor("failed loop"));
    expectAsGoodAsNew();
}

TEST_F(VanishingDeviceTest, FailsAPausedSoundWhenItResumes)
{
    m_requester.enqueue(fileItem("paused", soundFile("long.wav", longMs)));
    ASSERT_TRUE(m_requester.waitFor("started paused"));
    m_requester.enqueue(fileItem("urgent", soundFile("urgent.wav", shortMs), 3));
    EXPECT_TRUE(m_requester.waitFor("failed paused"));
    EXPECT_EQ(m_requester.ends("urgent"), 1);
    EXPECT_EQ(m_requester.ends("paused"), 1);
    expectAsGoodAsNew();
}

TEST_F(VanishingDeviceTest, RefusesACancelAfterTheFailure)
{
    m_requester.enqueue(fileItem("long", soundFile("long.wav", longMs)));
    EXPECT_TRUE(m_requester.waitFor("failed long"));
    m_requester.cancel("long");
    EXPECT_EQ(m_requester.answer(), "Invalid notification sound id to stop");
    EXPECT_EQ(m_requester.ends("long"), 1);
    expectAsGoodAsNew();
}
