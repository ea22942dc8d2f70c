// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The order of the audio sequence is guarded by assertions that stay in the built module. Each is
// brought to fail here by doing to the controller what no correct peer does.

#include "NotificationsTest.h"

#include "modules/notifications/NotificationPlayer.h"

namespace {
// Built from the module's own source with access to everything: most guards can't be reached from
// outside, which is their point.
class AssertionsDeathTest : public NotificationsTest
{
protected:
    AssertionsDeathTest()
        : m_player(&m_nodes, nullptr)
    {
        settle();
    }

    NotificationPlayer &controller() { return m_player; }

    void setReady()
    {
        controller().m_audioDucked = true;
        controller().m_audioResource = true;
    }

private:
    CMNodes m_nodes;
    NotificationPlayer m_player;
};

CMReply<QVariant> finished()
{
    CMReply<QVariant> reply;
    reply.setValue(QVariant());
    return reply;
}
} // namespace

TEST_F(AssertionsDeathTest, ADuckReplyWithoutADuckRequest)
{
    EXPECT_DEATH(controller().on_audioDucking_finished(finished()), "\"m_activeRequest == true\"");
}

TEST_F(AssertionsDeathTest, ADuckReplyWhileDucked)
{
    controller().m_activeRequest = true;
    controller().m_audioDucked = true;
    EXPECT_DEATH(controller().on_audioDucking_finished(finished()), "\"m_audioDucked == false\"");
}

TEST_F(AssertionsDeathTest, AcquiringWithoutDucking)
{
    EXPECT_DEATH(controller().continuePlayAudioMuted(), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, AnAcquireReplyWhileTheResourceIsHeld)
{
    setReady();
    EXPECT_DEATH(controller().handleRequestResourcesFinished(finished()),
                 "\"m_audioResource == false\"");
}

TEST_F(AssertionsDeathTest, TheTimersEndWhileSomethingPlays)
{
    setReady();
    controller().m_activePlaybackId = "a"_s;
    EXPECT_DEATH(controller().on_inactivityTimer_timeout(), "\"m_activePlaybackId.isEmpty\\(\\)\"");
}

TEST_F(AssertionsDeathTest, TheTimersEndWithoutDucking)
{
    EXPECT_DEATH(controller().on_inactivityTimer_timeout(), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, AnUnduckReplyWhileSomethingPlays)
{
    setReady();
    controller().m_activePlaybackId = "a"_s;
    EXPECT_DEATH(controller().on_audioUnducking_finished(finished()),
                 "\"m_activePlaybackId.isEmpty\\(\\)\"");
}

TEST_F(AssertionsDeathTest, AnUnduckReplyWithoutDucking)
{
    controller().m_activeRequest = true;
    EXPECT_DEATH(controller().on_audioUnducking_finished(finished()), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, AnUnduckReplyWithoutAnUnduckRequest)
{
    setReady();
    EXPECT_DEATH(controller().on_audioUnducking_finished(finished()),
                 "\"m_activeRequest == true\"");
}

TEST_F(AssertionsDeathTest, TakingFromTheQueueWithoutDucking)
{
    controller().m_audioResource = true;
    EXPECT_DEATH(controller().playItemFromQueue(), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, TakingFromTheQueueWithoutTheResource)
{
    controller().m_audioDucked = true;
    EXPECT_DEATH(controller().playItemFromQueue(), "\"m_audioResource == true\"");
}

TEST_F(AssertionsDeathTest, PlayingWhileSomethingPlays)
{
    setReady();
    controller().m_activePlaybackId = "a"_s;
    NotificationPlayerItem item;
    EXPECT_DEATH(controller().playItem(item), "\"m_activePlaybackId.isEmpty\\(\\)\"");
}

TEST_F(AssertionsDeathTest, PlayingWithoutDucking)
{
    NotificationPlayerItem item;
    EXPECT_DEATH(controller().playItem(item), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, PlayingWithoutTheResource)
{
    controller().m_audioDucked = true;
    NotificationPlayerItem item;
    EXPECT_DEATH(controller().playItem(item), "\"m_audioResource == true\"");
}

TEST_F(AssertionsDeathTest, AnEndWithoutDucking)
{
    EXPECT_DEATH(controller().soundFinished("a"_s, false, QString()), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, AnAcquireReplyOfAnotherType)
{
    const CMReply<int> reply;
    reply.setValue(1);
    EXPECT_DEATH(CMReply<QVariant>::finishCallback([](const CMReply<QVariant> &) {})(reply),
                 "Wrong type passed to CMReply::onFinished\\(\\)!");
}

TEST_F(AssertionsDeathTest, AConnectionThatCannotBeMade)
{
    QObject sender;
    EXPECT_DEATH(tavoConnect(&sender, &QObject::objectNameChanged, static_cast<QObject *>(nullptr),
                             &QObject::deleteLater, Qt::DirectConnection),
                 "\"connection\"");
}

using ControllerStateTest = AssertionsDeathTest;

TEST_F(ControllerStateTest, StartsWithNothingDuckedHeldOrOutstanding)
{
    EXPECT_FALSE(controller().m_audioDucked);
    EXPECT_FALSE(controller().m_audioResource);
    EXPECT_FALSE(controller().m_resourceRequestPending);
    EXPECT_TRUE(controller().m_activePlaybackId.isEmpty());
    EXPECT_FALSE(controller().m_activeRequest);
    EXPECT_TRUE(controller().m_queue.isEmpty());
    EXPECT_TRUE(controller().m_stoppingItems.isEmpty());
    EXPECT_EQ(controller().m_outputDevice, "testdevice"_s);
}

TEST_F(ControllerStateTest, FindsThePositionOfTheFirstItemWithAnId)
{
    NotificationPlayerItem a;
    a.id = "a"_s;
    NotificationPlayerItem b;
    b.id = "b"_s;
    EXPECT_EQ(NotificationPlayer::getPositionFromId({}, "a"_s), -1);
    EXPECT_EQ(NotificationPlayer::getPositionFromId({a, b}, "a"_s), 0);
    EXPECT_EQ(NotificationPlayer::getPositionFromId({a, b, b}, "b"_s), 1);
    EXPECT_EQ(NotificationPlayer::getPositionFromId({a, b}, "B"_s), -1);
}

TEST_F(ControllerStateTest, ClearsTheActiveIdForAPreemptingItemWhateverTheHead)
{
    setReady();
    NotificationPlayerItem head;
    head.id = "head"_s;
    controller().m_activeRequest = true; // keeps both items from playing
    EXPECT_TRUE(controller().enqueue(head));
    controller().m_activePlaybackId = "other"_s;
    NotificationPlayerItem urgent;
    urgent.id = "urgent"_s;
    urgent.priority = TavoNotificationItemPriority::Urgent;
    EXPECT_TRUE(controller().enqueue(urgent));
    EXPECT_TRUE(controller().m_activePlaybackId.isEmpty());
    EXPECT_EQ(controller().m_queue.first().id, "urgent"_s);
}

TEST_F(ControllerStateTest, SaysThatAResponseWasDealtWithInAnyCase)
{
    NotificationPlayerItem item;
    item.id = "a"_s;
    EXPECT_TRUE(controller().sendStopResponse(item, true, QString()));
    item.playbackResponsePath = responsePath();
    EXPECT_TRUE(controller().sendStopResponse(item, true, QString()));
    item.playbackResponsePath = CMPath("/nowhere"_s);
    EXPECT_TRUE(controller().sendStopResponse(item, false, "broken"_s));
    settle();
    EXPECT_EQ(journalOf("a"_s), QStringList{"cancelled"_s});
}

TEST_F(ControllerStateTest, ClearsTheActiveIdEvenWhenItsItemIsUnknown)
{
    setReady();
    controller().m_activePlaybackId = "x"_s;
    controller().soundFinished("x"_s, false, QString());
    EXPECT_TRUE(controller().m_activePlaybackId.isEmpty());
    EXPECT_EQ(
        logged(log4cplus::ERROR_LOG_LEVEL, "Id of stopped sound does not exists, ignoring. x"), 1);
    EXPECT_FALSE(controller().m_inactivityTimer.isActive());
}
