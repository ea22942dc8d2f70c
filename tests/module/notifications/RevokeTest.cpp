// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Revoke messages of the power manager.

#include "NotificationsTest.h"

namespace {
using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;
using Revocation = TavoPowerManagerRevokeMessageType;
using Resources = TavoPowerManagerResources;

class RevokeTest : public NotificationsTest
{
protected:
    RevokeTest() { load(); }

    static void expectEmptyAnswer(const CMReply<QVariant> &reply)
    {
        EXPECT_TRUE(reply.isFinished());
        EXPECT_FALSE(reply.error().isError());
        EXPECT_FALSE(reply.value().isValid());
    }
};
} // namespace

TEST_F(RevokeTest, StopsThePlayingItemAndCancelsTheRest)
{
    play("a"_s);
    enqueue("b"_s);
    expectEmptyAnswer(revoke(Revocation::Revoked));
    EXPECT_EQ(
        logged(INFO_LOG_LEVEL, "Notification player resources revoked, stopping notification"), 1);
    EXPECT_EQ(entered(INFO_LOG_LEVEL, "cancelAll", ""), 1);
    EXPECT_EQ(scripted("a"_s)->stops, 1);
    EXPECT_EQ(journalOf("b"_s), QStringList{"cancelled"_s});
    scripted("a"_s)->reportStopped();
    settle();
    EXPECT_EQ(journalOf("a"_s).mid(3, 2), (QStringList{"stop"_s, "cancelled"_s}));
    EXPECT_TRUE(inactivityTimer()->isActive());
}

TEST_F(RevokeTest, IsLoggedBeforeTheCancellingAndAnsweredLast)
{
    play("a"_s);
    enqueue("b"_s);
    const CMPath path = TavoNotificationsPath() + "/player/revokeResources"_s;
    const auto message = TavoPowerManagerRevokeMessage()
                             .setMessageType(Revocation::Revoked)
                             .setRevokeResources({Resources::Audio});
    std::ostringstream messageText;
    messageText << message;
    const CMReply<QVariant> reply;
    reply.onFinished(
        nullptr, [this](const CMReply<QVariant> &) { note("answered"); }, Qt::DirectConnection);
    CMRoot()->invoke(path, message, reply);
    beginStory();
    QCoreApplication::sendPostedEvents(worker(), QEvent::MetaCall);
    QCoreApplication::sendPostedEvents(player(), QEvent::MetaCall);
    EXPECT_THAT(story(), testing::ElementsAre(
                             "TRACE Enter on_revokeResources_activated: " + messageText.str(),
                             "INFO Notification player resources revoked, stopping notification",
                             "INFO Enter cancelAll: ", "DEBUG Enter cancel: Cancel notification: b",
                             "TRACE Enter sendStopResponse: item: b",
                             "DEBUG Sending response to /test/response res: {id: \"b\", type: 3}",
                             "to /test/response", "TRACE Leave sendStopResponse: ",
                             "DEBUG Leave cancel: ", "DEBUG Enter cancel: Cancel notification: a",
                             "a stop", "DEBUG Leave cancel: ", "INFO Leave cancelAll: ", "answered",
                             "TRACE Leave on_revokeResources_activated: "));
}

TEST_F(RevokeTest, IsNotFollowedByARelease)
{
    play("a"_s);
    revoke(Revocation::Revoked);
    scripted("a"_s)->reportStopped();
    settle();
    fireInactivityTimer();
    EXPECT_FALSE(journal().contains("release"_s));
    EXPECT_EQ(journal().last(), "unduck"_s);
}

TEST_F(RevokeTest, OfTheSecondTypeOnlyForgetsTheResource)
{
    play("a"_s);
    enqueue("b"_s);
    expectEmptyAnswer(revoke(Revocation::PostRevoked));
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Media player resources revoked (post-callback)"), 1);
    EXPECT_EQ(scripted("a"_s)->stops, 0);
    scripted("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(journal().count("acquire"_s), 2);
    EXPECT_EQ(journalOf("b"_s).last(), "started"_s);
}

TEST_F(RevokeTest, OfOtherResourcesIsAnsweredAndIgnored)
{
    play("a"_s);
    expectEmptyAnswer(revoke(Revocation::Revoked, {Resources::Processor, Resources::Network}));
    EXPECT_EQ(scripted("a"_s)->stops, 0);
    EXPECT_EQ(log().countAt(INFO_LOG_LEVEL), 1); // "Starting playback: a"
    scripted("a"_s)->reportEnded();
    settle();
    play("b"_s);
    EXPECT_EQ(journal().count("acquire"_s), 1);
}

TEST_F(RevokeTest, FindsTheAudioResourceAmongOthers)
{
    play("a"_s);
    revoke(Revocation::Revoked, {Resources::Display, Resources::Audio});
    EXPECT_EQ(scripted("a"_s)->stops, 1);
}

TEST_F(RevokeTest, FindsTheAudioResourceWhateverTheTypeOfItsNumber)
{
    for (const QVariant &number : {QVariant(2), QVariant(2.0), QVariant(2LL), QVariant("2"_s)}) {
        play("a"_s);
        request(TavoNotificationsPath() + "/player/revokeResources"_s,
                QVariantHash{{"revokeResources"_s, QVariantList{number}}});
        EXPECT_EQ(scripted("a"_s)->stops, 1);
        scripted("a"_s)->reportStopped();
        settle();
    }
}

TEST_F(RevokeTest, IsIgnoredWhileAnAcquireIsOutstanding)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    for (const auto type : {Revocation::Revoked, Revocation::PostRevoked}) {
        expectEmptyAnswer(revoke(type));
    }
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Ignoring revoke resources command, we already issued a new "
                                      "request resources request"),
              2);
    answer(TavoPowerManagerResourceRequestPath());
    EXPECT_EQ(journalOf("a"_s).last(), "started"_s);
}

TEST_F(RevokeTest, CancelsWaitingItemsWhileDucking)
{
    setDucking(ScriptedService::keep());
    enqueue("a"_s);
    revoke(Revocation::Revoked);
    EXPECT_EQ(journalOf("a"_s), QStringList{"cancelled"_s});
    answer(TavoPlayerMainAudioDuckingPath());
    // The audio sequence goes on without an item, to its end.
    EXPECT_TRUE(inactivityTimer()->isActive());
}

TEST_F(RevokeTest, IsAnsweredWhenNothingPlays)
{
    expectEmptyAnswer(revoke(Revocation::Revoked));
    expectEmptyAnswer(revoke(Revocation::PostRevoked));
    EXPECT_EQ(journal(), QStringList{"register"_s});
}

TEST_F(RevokeTest, LeavesTheInactivityTimerRunning)
{
    play("a"_s)->reportEnded();
    settle();
    revoke(Revocation::Revoked);
    EXPECT_TRUE(inactivityTimer()->isActive());
}

TEST_F(RevokeTest, OfAnUnknownTypeTakesTheResourceAndStopsNothing)
{
    play("a"_s);
    expectEmptyAnswer(revoke(Revocation::Enum(7)));
    EXPECT_EQ(scripted("a"_s)->stops, 0);
    scripted("a"_s)->reportEnded();
    settle();
    play("b"_s);
    EXPECT_EQ(journal().count("acquire"_s), 2);
}

TEST_F(RevokeTest, ChangesNothingAfterARefusedAcquire)
{
    setResources(ScriptedService::refuse("no"_s));
    enqueue("a"_s);
    expectEmptyAnswer(revoke(Revocation::Revoked));
    expectEmptyAnswer(revoke(Revocation::PostRevoked));
    EXPECT_FALSE(inactivityTimer()->isActive());
    setResources(ScriptedService::accept());
    play("b"_s);
    EXPECT_EQ(journal().count("duck"_s), 1);
}

TEST_F(RevokeTest, IsAnsweredWhileUnducking)
{
    play("a"_s)->reportEnded();
    settle();
    setDucking(ScriptedService::keep());
    fireInactivityTimer();
    expectEmptyAnswer(revoke(Revocation::Revoked));
    expectEmptyAnswer(revoke(Revocation::PostRevoked));
    services().requests(TavoPlayerMainAudioDuckingPath()).back().reply().setValue(QVariant());
    settle();
    setDucking(ScriptedService::accept());
    play("b"_s);
}

TEST_F(RevokeTest, LogsTheMessage)
{
    const auto message = TavoPowerManagerRevokeMessage()
                             .setMessageType(Revocation::Revoked)
                             .setRevokeResources({Resources::Audio});
    revoke(Revocation::Revoked);
    std::ostringstream text;
    text << message;
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "on_revokeResources_activated", text.str()), 1);
}

TEST_F(RevokeTest, AnswersInvalidMessages)
{
    play("a"_s);
    const CMPath path = TavoNotificationsPath() + "/player/revokeResources"_s;
    for (const QVariant &value :
         {QVariant(), QVariant(2), QVariant(QVariantList{2}),
          QVariant(QVariantHash{{"revokeResources"_s, 2}, {"messageType"_s, "now"_s}}),
          QVariant(
              QVariantHash{{"revokeResources"_s, QVariantList{QVariantHash(), QVariant()}}})}) {
        expectEmptyAnswer(request(path, value));
    }
    EXPECT_EQ(scripted("a"_s)->stops, 0);
}
