// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The assertions of the built module that protect the order of the audio sequence. Here they fail
// because a slot is called at a time when no correct service would. SoundInsideTest has the
// assertions that no slot leads to.

#include "NotificationsTest.h"

namespace {
class AssertionsDeathTest : public NotificationsTest
{
protected:
    AssertionsDeathTest() { load(); }

    static CMPath ducking() { return TavoPlayerMainAudioDuckingPath(); }
    static CMPath resources() { return TavoPowerManagerResourceRequestPath(); }

    void reportDucked() { call("on_audioDucking_finished"); }
    void reportUnducked() { call("on_audioUnducking_finished"); }
    void reportEnd()
    {
        QMetaObject::invokeMethod(player(), "on_sound_finished", Q_ARG(QString, "a"));
    }
    void endIdleTime() { QMetaObject::invokeMethod(player(), "on_inactivityTimer_timeout"); }

    /// Makes the controller send a second acquire request while the first one is outstanding.
    void sendTwoAcquires()
    {
        setResources(ScriptedService::keep());
        enqueue("a"_s);
        reportUnducked();
        settle();
        ASSERT_EQ(services().count(resources()), 2);
    }

private:
    void call(const char *slot)
    {
        const CMReply<QVariant> reply;
        reply.setValue(QVariant());
        QMetaObject::invokeMethod(player(), slot, Q_ARG(CMVoidReply, reply));
    }
};
} // namespace

TEST_F(AssertionsDeathTest, ADuckReplyWithoutADuckRequest)
{
    EXPECT_DEATH(reportDucked(), "\"m_activeRequest == true\"");
}

TEST_F(AssertionsDeathTest, ADuckReplyWhileDucked)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    EXPECT_DEATH(reportDucked(), "\"m_audioDucked == false\"");
}

TEST_F(AssertionsDeathTest, AnAcquireReplyWhileTheResourceIsHeld)
{
    sendTwoAcquires();
    answer(resources());
    EXPECT_DEATH(answer(resources()), "\"m_audioResource == false\"");
}

TEST_F(AssertionsDeathTest, TheTimersEndWhileSomethingPlays)
{
    play("a"_s);
    EXPECT_DEATH(endIdleTime(), "\"m_activePlaybackId.isEmpty\\(\\)\"");
}

TEST_F(AssertionsDeathTest, TheTimersEndWithoutDucking)
{
    EXPECT_DEATH(endIdleTime(), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, AnUnduckReplyWhileSomethingPlays)
{
    play("a"_s);
    EXPECT_DEATH(reportUnducked(), "\"m_activePlaybackId.isEmpty\\(\\)\"");
}

TEST_F(AssertionsDeathTest, AnUnduckReplyWithoutDucking)
{
    setDucking(ScriptedService::keep());
    enqueue("a"_s);
    EXPECT_DEATH(reportUnducked(), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, AnUnduckReplyWithoutAnUnduckRequest)
{
    play("a"_s)->reportEnded();
    EXPECT_DEATH(reportUnducked(), "\"m_activeRequest == true\"");
}

TEST_F(AssertionsDeathTest, TakingFromTheQueueWithoutDucking)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    cancel("a"_s);
    reportUnducked();
    EXPECT_DEATH(answer(resources()), "\"m_audioDucked == true\"");
}

TEST_F(AssertionsDeathTest, PlayingWhileSomethingPlays)
{
    sendTwoAcquires();
    answer(resources());
    revoke(TavoPowerManagerRevokeMessageType::PostRevoked);
    EXPECT_DEATH(answer(resources()), "\"m_activePlaybackId.isEmpty\\(\\)\"");
}

TEST_F(AssertionsDeathTest, AnEndWithoutDucking)
{
    EXPECT_DEATH(reportEnd(), "\"m_audioDucked == true\"");
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
