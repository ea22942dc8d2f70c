// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// How items end (by themselves, stopped, failed or cancelled), and how this is reported.

#include "NotificationsTest.h"

namespace {
using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;
using Type = TavoNotificationPlayerItemType;

class CompletionTest : public NotificationsTest
{
protected:
    CompletionTest() { load(); }

    /// Plays b while a is paused behind it.
    void pauseABehindB(Type::Enum typeOfA = Type::Uri)
    {
        enqueue(item("a"_s, 1).setType(typeOfA));
        play("b"_s, 2);
        log().clear();
    }
};
} // namespace

TEST_F(CompletionTest, ReportsAnEndByItselfAsFinished)
{
    play("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(journalOf("a"_s).mid(3), (QStringList{"finished"_s, "destroy"_s}));
    EXPECT_EQ(entered(DEBUG_LOG_LEVEL, "on_sound_finished", "id: a"), 1);
    EXPECT_EQ(entered(DEBUG_LOG_LEVEL, "soundFinished", "id: a, canceled: 0, error: "), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "sendStopResponse", "item: a"), 1);
}

TEST_F(CompletionTest, ReportsAStopAsCancelled)
{
    play("a"_s)->reportStopped();
    settle();
    EXPECT_EQ(journalOf("a"_s).mid(3), (QStringList{"cancelled"_s, "destroy"_s}));
    EXPECT_EQ(entered(DEBUG_LOG_LEVEL, "on_sound_stopped", "id: a"), 1);
    EXPECT_EQ(entered(DEBUG_LOG_LEVEL, "soundFinished", "id: a, canceled: 1, error: "), 1);
}

TEST_F(CompletionTest, ReportsAnErrorAsFailed)
{
    play("a"_s)->reportError("device gone"_s);
    settle();
    EXPECT_EQ(journalOf("a"_s).mid(3), (QStringList{"failed"_s, "destroy"_s}));
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "on_sound_failed", "id: a, reason: device gone"), 1);
    EXPECT_EQ(entered(DEBUG_LOG_LEVEL, "soundFinished", "id: a, canceled: 0, error: device gone"),
              1);
}

TEST_F(CompletionTest, ReportsAnErrorWithoutAReasonAsFinished)
{
    for (const QString &reason : {QString(), QString("")}) {
        play("a"_s)->reportError(reason);
        settle();
        EXPECT_EQ(journal().takeLast(), "a destroy"_s);
        EXPECT_EQ(journal().takeLast(), "a finished"_s);
    }
}

TEST_F(CompletionTest, SendsIdAndTypeInTheResponse)
{
    play("a"_s)->reportEnded();
    settle();
    const QVariant value = services().requests(responsePath()).back().value();
    EXPECT_EQ(value, TavoValue()
                         .setNotificationPlayerResponse(
                             TavoNotificationPlayerResponse().setId("a"_s).setType(
                                 TavoNotificationPlayerResponseType::Enum(2)))
                         .__variant());
}

TEST_F(CompletionTest, LogsWhatItSendsAndWhere)
{
    play("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(
        logged(DEBUG_LOG_LEVEL, "Sending response to /test/response res: {id: \"a\", type: 2}"), 1);
}

TEST_F(CompletionTest, LogsTheEndOfThePlayingItemAroundTheResponse)
{
    play("a"_s);
    beginStory();
    scripted("a"_s)->reportEnded();
    EXPECT_THAT(story(), testing::ElementsAre(
                             "DEBUG Enter on_sound_finished: id: a",
                             "DEBUG Enter soundFinished: id: a, canceled: 0, error: ",
                             "DEBUG Active playback finished",
                             "DEBUG Removed notification item from queue: a",
                             "TRACE Enter sendStopResponse: item: a",
                             "DEBUG Sending response to /test/response res: {id: \"a\", type: 2}",
                             "to /test/response",
                             "TRACE Leave sendStopResponse: ", "TRACE Active notification stopped",
                             "TRACE Enter continuePlayAudio: queue size: 0",
                             "DEBUG Leave continuePlayAudio: No next item to play",
                             "DEBUG Leave soundFinished: ", "DEBUG Leave on_sound_finished: "));
}

TEST_F(CompletionTest, ListsTheQueueBetweenTheEndOfAPausedItemAndTheNextStep)
{
    pauseABehindB();
    beginStory();
    scripted("a"_s)->reportStopped();
    EXPECT_THAT(story(), testing::ElementsAre(
                             "DEBUG Enter on_sound_stopped: id: a",
                             "DEBUG Enter soundFinished: id: a, canceled: 1, error: ",
                             "DEBUG Removed notification item from queue: a",
                             "TRACE Enter sendStopResponse: item: a",
                             "DEBUG Sending response to /test/response res: {id: \"a\", type: 3}",
                             "to /test/response",
                             "TRACE Leave sendStopResponse: ", "DEBUG Not a first item finished 1",
                             "TRACE Enter dumpQueue: dump after not first item finished",
                             "TRACE dump --  b type Uri prio High", "TRACE Leave dumpQueue: ",
                             "TRACE Enter continuePlayAudio: queue size: 1",
                             "TRACE Leave continuePlayAudio: Playback active: b",
                             "DEBUG Leave soundFinished: ", "DEBUG Leave on_sound_stopped: "));
}

TEST_F(CompletionTest, LogsTheEndOfAPausedFakeBeforeTheNextStep)
{
    pauseABehindB(Type::Fake);
    beginStory();
    scripted("a"_s)->reportError("broken"_s);
    EXPECT_THAT(story(), testing::ElementsAre(
                             "TRACE Enter on_sound_failed: id: a, reason: broken",
                             "DEBUG Enter soundFinished: id: a, canceled: 0, error: broken",
                             "DEBUG Removed notification item from queue: a",
                             "TRACE Enter sendStopResponse: item: a",
                             "DEBUG Sending response to /test/response res: {id: \"a\", type: 4}",
                             "to /test/response", "TRACE Leave sendStopResponse: ",
                             "TRACE Disabled fake notification on position 1",
                             "TRACE Enter continuePlayAudio: queue size: 1",
                             "TRACE Leave continuePlayAudio: Playback active: b",
                             "DEBUG Leave soundFinished: ", "TRACE Leave on_sound_failed: "));
}

TEST_F(CompletionTest, LogsTheEndOfAFakeThatPlayed)
{
    enqueue(item("a"_s).setType(Type::Fake));
    scripted("a"_s)->reportEnded();
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Active notification stopped"), 1);
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Disabled fake notification on position 0"), 0);
}

TEST_F(CompletionTest, EndsAPausedItemThatIsNotTheFirst)
{
    pauseABehindB();
    scripted("a"_s)->reportError("device gone"_s);
    settle();
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Not a first item finished 1"), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "dumpQueue", "dump after not first item finished"), 1);
    EXPECT_EQ(journal().count("a failed"_s), 1);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "continuePlayAudio", "Playback active: b"), 1);
}

TEST_F(CompletionTest, EndsAFakeThatIsNotTheFirstWithoutListingTheQueue)
{
    pauseABehindB(Type::Fake);
    scripted("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Disabled fake notification on position 1"), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "dumpQueue", "dump after not first item finished"), 0);
}

TEST_F(CompletionTest, IgnoresTheEndOfAnUnknownId)
{
    play("a"_s);
    log().clear();
    journal().clear();
    QMetaObject::invokeMethod(player(), "on_sound_finished", Q_ARG(QString, "x"_s));
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Id of stopped sound does not exists, ignoring. x"), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "continuePlayAudio", "queue size: 1"), 0);
    EXPECT_EQ(journal(), QStringList());
}

TEST_F(CompletionTest, IgnoresASecondEndOfOnePlayer)
{
    ScriptedPlayer *player = play("a"_s);
    player->reportEnded();
    player->reportEnded();
    settle();
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Id of stopped sound does not exists, ignoring. a"), 1);
    EXPECT_EQ(journal().count("a finished"_s), 1);
}

TEST_F(CompletionTest, SendsTheResponseBeforeItReleasesThePlayer)
{
    ScriptedPlayer *player = play("a"_s);
    bool isReleased = true;
    services().setDirectScript(responsePath(), [&](const CMSetDataRequest &request) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        isReleased = !player->isAlive();
        request.reply().setValue(QVariant());
    });
    player->reportEnded();
    EXPECT_FALSE(isReleased);
}

TEST_F(CompletionTest, ReleasesThePlayerLater)
{
    ScriptedPlayer *player = play("a"_s);
    player->reportEnded();
    EXPECT_TRUE(player->isAlive());
    settle();
    EXPECT_FALSE(player->isAlive());
}

TEST_F(CompletionTest, StopsThePlayingItemOnACancelAndReportsOnlyItsEnd)
{
    play("a"_s);
    enqueue("b"_s);
    EXPECT_FALSE(cancel("a"_s).error().isError());
    EXPECT_EQ(entered(DEBUG_LOG_LEVEL, "cancel", "Cancel notification: a"), 1);
    EXPECT_EQ(left(DEBUG_LOG_LEVEL, "cancel", ""), 1);
    EXPECT_EQ(journalOf("a"_s).mid(3), QStringList{"stop"_s});
    EXPECT_EQ(scripted("b"_s), nullptr);
    scripted("a"_s)->reportStopped();
    settle();
    EXPECT_EQ(journalOf("a"_s).mid(4), (QStringList{"cancelled"_s, "destroy"_s}));
    EXPECT_EQ(journalOf("b"_s).last(), "started"_s);
}

TEST_F(CompletionTest, PlaysNothingElseWhileACancelledItemIsStopping)
{
    play("a"_s);
    cancel("a"_s);
    enqueue("b"_s);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "continuePlayAudio", "Playback active: a"), 1);
    EXPECT_EQ(scripted("b"_s), nullptr);
    scripted("a"_s)->reportStopped();
    settle();
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Active playback finished"), 1);
    EXPECT_EQ(journalOf("b"_s).last(), "started"_s);
}

TEST_F(CompletionTest, AcceptsAnEndReportedFromInsideStop)
{
    play("a"_s);
    enqueue("b"_s);
    ScriptedPlayers::instance().onCall = [](const QString &call, const QString &id) {
        if (call == "stop"_s) {
            scripted(id)->reportStopped();
        }
    };
    EXPECT_FALSE(cancel("a"_s).error().isError());
    EXPECT_EQ(journalOf("a"_s).last(), "cancelled"_s);
    EXPECT_EQ(journalOf("b"_s).last(), "started"_s);
    EXPECT_FALSE(scripted("a"_s)->isAlive());
}

TEST_F(CompletionTest, ReportsAnErrorOfAStoppingItemAsFailed)
{
    play("a"_s);
    cancel("a"_s);
    scripted("a"_s)->reportError("device gone"_s);
    settle();
    EXPECT_EQ(journalOf("a"_s).at(4), "failed"_s);
}

TEST_F(CompletionTest, StopsAPausedItemOnACancel)
{
    pauseABehindB();
    cancel("a"_s);
    EXPECT_EQ(scripted("a"_s)->stops, 1);
    scripted("a"_s)->reportStopped();
    settle();
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Not a first item finished 0"), 1);
    EXPECT_EQ(journal().count("a cancelled"_s), 1);
    EXPECT_EQ(scripted("b"_s)->stops, 0);
}

TEST_F(CompletionTest, ReportsTheCancelOfAnItemThatNeverStartedAtOnce)
{
    play("a"_s);
    enqueue("b"_s);
    log().clear();
    const CMReply<QVariant> reply;
    CMRoot()->invoke(TavoNotificationPlayerCancelPath(), TavoValue().setString_("b"_s), reply);
    settle();
    EXPECT_EQ(journalOf("b"_s), QStringList{"cancelled"_s});
    EXPECT_EQ(scripted("a"_s)->stops, 0);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "continuePlayAudio", "queue size: 1"), 0);
}

TEST_F(CompletionTest, RefusesASecondCancelWhileThePlayerIsStopping)
{
    play("a"_s);
    cancel("a"_s);
    EXPECT_TRUE(cancel("a"_s).error().isError());
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Unable to cancel not existing item: a"), 1);
    EXPECT_EQ(scripted("a"_s)->stops, 1);
}

TEST_F(CompletionTest, RefusesACancelOfAnUnknownId)
{
    EXPECT_TRUE(cancel("x"_s).error().isError());
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Unable to cancel not existing item: x"), 1);
}

TEST_F(CompletionTest, CancelsAllFromTheLeastUrgentToTheHead)
{
    play("a"_s, 3);
    enqueue("b"_s, 2);
    enqueue("c"_s, 1);
    journal().clear();
    revoke(TavoPowerManagerRevokeMessageType::Revoked);
    EXPECT_EQ(entered(INFO_LOG_LEVEL, "cancelAll", ""), 1);
    EXPECT_EQ(scripted("a"_s)->stops, 1);
    EXPECT_EQ(journal(), (QStringList{"a stop"_s, "c cancelled"_s, "b cancelled"_s}));
    std::vector<std::string> order;
    for (const auto &record : log().find("): Cancel notification: ")) {
        order.push_back(record.message.substr(record.message.size() - 1));
    }
    EXPECT_THAT(order, testing::ElementsAre("c", "b", "a"));
}

TEST_F(CompletionTest, DoesNotStopStoppingItemsAgainWhenItCancelsAll)
{
    play("a"_s);
    cancel("a"_s);
    revoke(TavoPowerManagerRevokeMessageType::Revoked);
    EXPECT_EQ(scripted("a"_s)->stops, 1);
}

TEST_F(CompletionTest, EndsEveryAcceptedItemExactlyOnceInALongMixedRun)
{
    play("a"_s, 1);
    play("b"_s, 3);
    enqueue("c"_s, 2);
    enqueue(item("d"_s, 2).setType(Type::Enum(9)));
    cancel("c"_s);
    scripted("b"_s)->reportError("broken"_s);
    settle();
    scripted("a"_s)->reportEnded();
    settle();
    QStringList ends;
    for (const QString &line : journal()) {
        if (line.endsWith("finished"_s) || line.endsWith("failed"_s) ||
            line.endsWith("cancelled"_s)) {
            ends.append(line);
        }
    }
    EXPECT_EQ(ends, (QStringList{"c cancelled"_s, "b failed"_s, "d failed"_s, "a finished"_s}));
}
