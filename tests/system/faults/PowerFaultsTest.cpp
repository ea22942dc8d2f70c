// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"
#include "support/EventLoop.h"

using testing::ElementsAre;
using testing::IsEmpty;

/// A power manager that does not reply, and a player that does.
class SilentPowerManagerTest : public FaultTest
{
protected:
    void startKeeping(const QJsonArray &kinds)
    {
        startModules({standIn({{"powerManager", true}, {"keep", kinds}}), playerModule(),
                      "notifications", m_requester.module()});
    }

    void enqueue(const QString &id, int priority = 1)
    {
        m_requester.enqueue(fileItem(id, soundFile("sound.wav", shortMs), priority));
        EXPECT_EQ(m_requester.answer(), "");
    }
};

TEST_F(SilentPowerManagerTest, NotificationsWaitAndSoundInTheirOrderOnceItAnswers)
{
    startKeeping({"acquire"});
    enqueue("normal");
    enqueue("urgent", 3);
    ASSERT_TRUE(m_host.waitForLog("keeping acquire"));
    EXPECT_THAT(m_requester.responses(), IsEmpty());
    EXPECT_EQ(framesHeard(), 0);
    letAnswer("acquire");
    EXPECT_TRUE(m_requester.waitFor("finished normal"));
    EXPECT_THAT(m_requester.responses(), ElementsAre("started urgent", "finished urgent",
                                                     "started normal", "finished normal"));
    EXPECT_EQ(m_host.log().count("keeping acquire"), 1);
    expectAsGoodAsNew();
}

TEST_F(SilentPowerManagerTest, ACancelIsAnsweredMeanwhile)
{
    startKeeping({"acquire"});
    enqueue("sound");
    ASSERT_TRUE(m_host.waitForLog("keeping acquire"));
    m_requester.cancel("sound");
    EXPECT_EQ(m_requester.answer(), "");
    EXPECT_TRUE(m_requester.waitFor("cancelled sound"));
    letAnswer("acquire");
    expectAsGoodAsNew();
    EXPECT_EQ(m_requester.ends("sound"), 1);
    EXPECT_TRUE(m_host.waitForLog("answering release"));
}

TEST_F(SilentPowerManagerTest, AnItemThatReplacesACancelledOneSoundsOnceItAnswers)
{
    startKeeping({"acquire"});
    enqueue("cancelled");
    ASSERT_TRUE(m_host.waitForLog("keeping acquire"));
    m_requester.cancel("cancelled");
    EXPECT_EQ(m_requester.answer(), "");
    enqueue("sound");
    letAnswer("acquire");
    EXPECT_TRUE(m_requester.waitFor("finished sound"));
    EXPECT_THAT(m_requester.responses(),
                ElementsAre("cancelled cancelled", "started sound", "finished sound"));
    expectAsGoodAsNew();
}

TEST_F(SilentPowerManagerTest, NothingWaitsForTheReplyToARelease)
{
    startKeeping({"release"});
    enqueue("first");
    EXPECT_TRUE(m_requester.waitFor("restored"));
    EXPECT_TRUE(m_host.waitForLog("keeping release"));
    enqueue("second");
    EXPECT_TRUE(m_requester.waitFor("finished second"));
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(SilentPowerManagerTest, NothingWaitsForTheReplyToARegistration)
{
    startKeeping({"register"});
    ASSERT_TRUE(m_host.waitForLog("keeping register"));
    enqueue("sound");
    EXPECT_TRUE(m_requester.waitFor("finished sound"));
    expectAsGoodAsNew();
}

TEST_F(SilentPowerManagerTest, TheHostStopsWithoutItsReply)
{
    startKeeping({"register", "acquire"});
    enqueue("sound");
    ASSERT_TRUE(m_host.waitForLog("keeping acquire"));
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(SilentPowerManagerTest, TheDisplayGoesOnMeanwhile)
{
    startKeeping({"acquire"});
    enqueue("sound");
    ASSERT_TRUE(m_host.waitForLog("keeping acquire"));
    m_requester.invoke("/notifications/display/open",
                       {{"notificationDisplayItem", QJsonObject{{"message", "hello"}}}});
    EXPECT_EQ(m_requester.answer(), "");
    letAnswer("acquire");
    EXPECT_TRUE(m_requester.waitFor("finished sound"));
}

class RefusingPowerManagerTest : public SilentPowerManagerTest
{
};

TEST_F(RefusingPowerManagerTest, EveryNotificationIsCancelledAndTheHostGoesOn)
{
    startModules({standIn({{"powerManager", true}, {"refuse", QJsonArray{"acquire"}}}),
                  playerModule(), "notifications", m_requester.module()});
    enqueue("first");
    EXPECT_TRUE(m_requester.waitFor("cancelled first"));
    enqueue("second");
    EXPECT_TRUE(m_requester.waitFor("cancelled second"));
    EXPECT_EQ(framesHeard(), 0);
    EXPECT_EQ(stopHost(), 0);
}

class NoPowerManagerTest : public SilentPowerManagerTest
{
};

TEST_F(NoPowerManagerTest, EachNotificationIsCancelledOnce)
{
    startModules({playerModule(), "notifications", m_requester.module()});
    for (const char *id : {"first", "second"}) {
        enqueue(id);
        EXPECT_TRUE(m_requester.waitFor(std::string("cancelled ") + id));
        EXPECT_EQ(m_requester.ends(id), 1);
    }
    EXPECT_EQ(framesHeard(), 0);
    EXPECT_TRUE(waitForSettled(m_host.processId(), m_before));
    EXPECT_EQ(stopHost(), 0);
}

/// A player that does not reply.
class SilentPlayerTest : public SilentPowerManagerTest
{
protected:
    void startKeepingOfPlayer(const QJsonArray &kinds)
    {
        startModules({"powermanager",
                      standIn({{"player", true}, {"device", "plain"}, {"keep", kinds}}),
                      "notifications", m_requester.module()});
    }
};

TEST_F(SilentPlayerTest, NotificationsWaitUntilTheMainAudioIsDucked)
{
    startKeepingOfPlayer({"duck"});
    enqueue("sound");
    ASSERT_TRUE(m_host.waitForLog("keeping duck"));
    EXPECT_FALSE(m_requester.has("acquired"));
    letAnswer("duck");
    EXPECT_TRUE(m_requester.waitFor("finished sound"));
    expectAsGoodAsNew();
}

TEST_F(SilentPlayerTest, NotificationsWaitUntilTheMainAudioIsRestored)
{
    startKeepingOfPlayer({"unduck"});
    enqueue("first");
    ASSERT_TRUE(m_host.waitForLog("keeping unduck"));
    enqueue("second");
    EXPECT_EQ(m_requester.ends("second"), 0);
    letAnswer("unduck");
    EXPECT_TRUE(m_requester.waitFor("finished second"));
    expectAsGoodAsNew();
}
