// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The steps before an item is played: ducking, acquiring, and their failures.

#include "NotificationsTest.h"

namespace {
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;

class AudioSequenceTest : public NotificationsTest
{
protected:
    AudioSequenceTest() { load(); }

    static CMPath ducking() { return TavoPlayerMainAudioDuckingPath(); }
    static CMPath resources() { return TavoPowerManagerResourceRequestPath(); }

    /// The requests in the journal that belong to the audio sequence.
    QStringList sequence()
    {
        QStringList lines;
        for (const QString &line : journal()) {
            if (!line.contains(' ') && line != "register"_s) {
                lines.append(line);
            }
        }
        return lines;
    }
};
} // namespace

TEST_F(AudioSequenceTest, DucksThenAcquiresThenPlaysThenReports)
{
    play("a"_s);
    EXPECT_EQ(journal(), (QStringList{"register"_s, "duck"_s, "acquire"_s, "a construct"_s,
                                      "a play"_s, "a started"_s}));
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "continuePlayAudio", "queue size: 1"), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "on_audioDucking_finished", ""), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "continuePlayAudioMuted", ""), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "handleRequestResourcesFinished", ""), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "playItemFromQueue", ""), 1);
}

TEST_F(AudioSequenceTest, AsksToDuckInItsOwnName)
{
    play("a"_s);
    const TavoPlayerAudioDuckingRequest record(
        services().requests(ducking()).front().value().toHash());
    EXPECT_TRUE(record.duckAudio());
    EXPECT_EQ(record.requester(), TavoNotificationsName());
}

TEST_F(AudioSequenceTest, AcquiresTheAudioResourceInItsOwnName)
{
    play("a"_s);
    const TavoPowerManagerResourceRequest record(
        services().requests(resources()).front().value().toHash());
    EXPECT_EQ(record.moduleName(), TavoNotificationsName());
    EXPECT_EQ(int(record.resource()), 2);
    EXPECT_EQ(int(record.action()), 1);
}

TEST_F(AudioSequenceTest, DucksOnceForItemsThatComeWhileDucking)
{
    setDucking(ScriptedService::keep());
    enqueue("a"_s);
    enqueue("b"_s);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "continuePlayAudio", "Active request"), 1);
    answer(ducking());
    EXPECT_EQ(sequence(), (QStringList{"duck"_s, "acquire"_s}));
    EXPECT_EQ(journalOf("a"_s).last(), "started"_s);
}

TEST_F(AudioSequenceTest, AcquiresOnceForItemsThatComeWhileAcquiring)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    enqueue("b"_s);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "continuePlayAudio", "Active request"), 1);
    EXPECT_TRUE(ScriptedPlayers::instance().all().empty());
    answer(resources());
    EXPECT_EQ(sequence(), (QStringList{"duck"_s, "acquire"_s}));
    EXPECT_EQ(journalOf("a"_s).last(), "started"_s);
}

TEST_F(AudioSequenceTest, DoesNotInterruptThePlayingItemForAnother)
{
    play("a"_s);
    enqueue("b"_s);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "continuePlayAudio", "Playback active: a"), 1);
    EXPECT_EQ(scripted("b"_s), nullptr);
}

TEST_F(AudioSequenceTest, PlaysTheNextItemWithoutDuckingOrAcquiringAgain)
{
    play("a"_s);
    enqueue("b"_s);
    scripted("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(sequence(), (QStringList{"duck"_s, "acquire"_s}));
    EXPECT_EQ(journalOf("b"_s).last(), "started"_s);
}

TEST_F(AudioSequenceTest, PlaysAlthoughDuckingFailedAndUnducksAfterwards)
{
    setDucking(ScriptedService::refuse("no mixer"_s));
    play("a"_s);
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Failed to duck audio, error: no mixer"), 1);
    scripted("a"_s)->reportEnded();
    settle();
    fireInactivityTimer();
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Failed to unduck audio, error: no mixer"), 1);
    EXPECT_EQ(sequence(), (QStringList{"duck"_s, "acquire"_s, "release"_s, "unduck"_s}));
}

TEST_F(AudioSequenceTest, LogsAFailedDuckBeforeItGoesOn)
{
    setDucking(ScriptedService::keep());
    enqueue("a"_s);
    beginStory();
    services().requests(ducking()).back().reply().setError(CMError("Test"_s, "no mixer"));
    EXPECT_THAT(
        story(),
        testing::ElementsAre(
            "TRACE Enter on_audioDucking_finished: ", "WARN Failed to duck audio, error: no mixer",
            "TRACE Enter continuePlayAudioMuted: ", "to " + resources().toString().toStdString(),
            "TRACE Leave continuePlayAudioMuted: ", "TRACE Leave on_audioDucking_finished: "));
}

TEST_F(AudioSequenceTest, LogsAFailedUnduckBeforeItDucksAgain)
{
    play("a"_s)->reportEnded();
    settle();
    setDucking(ScriptedService::keep());
    fireInactivityTimer();
    enqueue("b"_s);
    beginStory();
    services().requests(ducking()).back().reply().setError(CMError("Test"_s, "no mixer"));
    EXPECT_THAT(story(), testing::ElementsAre("TRACE Enter on_audioUnducking_finished: ",
                                              "WARN Failed to unduck audio, error: no mixer",
                                              "TRACE Enter continuePlayAudio: queue size: 1",
                                              "to " + ducking().toString().toStdString(),
                                              "TRACE Leave continuePlayAudio: ",
                                              "TRACE Leave on_audioUnducking_finished: "));
}

TEST_F(AudioSequenceTest, GoesOnAfterAFailedUnduck)
{
    play("a"_s)->reportEnded();
    settle();
    setDucking(ScriptedService::refuse("no mixer"_s));
    fireInactivityTimer();
    setDucking(ScriptedService::accept());
    play("b"_s);
    EXPECT_EQ(sequence(),
              (QStringList{"duck"_s, "acquire"_s, "release"_s, "unduck"_s, "duck"_s, "acquire"_s}));
}

TEST_F(AudioSequenceTest, PlaysAlthoughThereIsNoDuckingNode)
{
    services().withdraw(ducking());
    play("a"_s);
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Failed to duck audio, error: There is no node at "
                                     "/player/mainAudio/ducking"),
              1);
    scripted("a"_s)->reportEnded();
    settle();
    fireInactivityTimer();
    play("b"_s);
}

TEST_F(AudioSequenceTest, CancelsEverythingWhenTheResourceIsRefused)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s, 2);
    enqueue("b"_s, 1);
    refuse(resources(), "in standby"_s);
    EXPECT_EQ(
        logged(ERROR_LOG_LEVEL, "Failed to request resources, canceling notifications: in standby"),
        1);
    EXPECT_EQ(journal().mid(3), (QStringList{"b cancelled"_s, "a cancelled"_s}));
}

TEST_F(AudioSequenceTest, LogsARefusalBeforeItCancels)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s, 2);
    enqueue("b"_s, 1);
    services().requests(resources()).back().reply().setError(CMError("Test"_s, "in standby"));
    beginStory();
    QCoreApplication::sendPostedEvents();
    EXPECT_THAT(story(),
                testing::ElementsAre(
                    "TRACE Enter handleRequestResourcesFinished: ",
                    "ERROR Failed to request resources, canceling notifications: in standby",
                    "INFO Enter cancelAll: ", "DEBUG Enter cancel: Cancel notification: b",
                    "TRACE Enter sendStopResponse: item: b",
                    "DEBUG Sending response to /test/response res: {id: \"b\", type: 3}",
                    "to /test/response", "TRACE Leave sendStopResponse: ", "DEBUG Leave cancel: ",
                    "DEBUG Enter cancel: Cancel notification: a",
                    "TRACE Enter sendStopResponse: item: a",
                    "DEBUG Sending response to /test/response res: {id: \"a\", type: 3}",
                    "to /test/response", "TRACE Leave sendStopResponse: ", "DEBUG Leave cancel: ",
                    "INFO Leave cancelAll: ", "TRACE Leave handleRequestResourcesFinished: "));
}

TEST_F(AudioSequenceTest, StaysDuckedWithoutATimerAfterARefusal)
{
    setResources(ScriptedService::refuse("in standby"_s));
    enqueue("a"_s);
    EXPECT_EQ(sequence(), (QStringList{"duck"_s, "acquire"_s}));
    EXPECT_FALSE(inactivityTimer()->isActive());
}

TEST_F(AudioSequenceTest, AcquiresWithoutDuckingAgainAfterARefusal)
{
    setResources(ScriptedService::refuse("in standby"_s));
    enqueue("a"_s);
    setResources(ScriptedService::accept());
    play("b"_s)->reportEnded();
    settle();
    fireInactivityTimer();
    EXPECT_EQ(sequence(),
              (QStringList{"duck"_s, "acquire"_s, "acquire"_s, "release"_s, "unduck"_s}));
}

TEST_F(AudioSequenceTest, IsNotPlayingOnceARefusalHasEmptiedTheQueue)
{
    play("a"_s);
    enqueue("b"_s);
    revoke(TavoPowerManagerRevokeMessageType::PostRevoked);
    setResources(ScriptedService::refuse("in standby"_s));
    scripted("a"_s)->reportEnded();
    settle();
    EXPECT_EQ(journalOf("b"_s), QStringList{"cancelled"_s});
    EXPECT_FALSE(isPlaying());
    EXPECT_FALSE(inactivityTimer()->isActive());
}

TEST_F(AudioSequenceTest, IsPlayingUntilStoppingItemsHaveStopped)
{
    play("a"_s, 1);
    play("b"_s, 2); // pauses a
    revoke(TavoPowerManagerRevokeMessageType::PostRevoked);
    setResources(ScriptedService::refuse("in standby"_s));
    scripted("b"_s)->reportEnded();
    settle();
    EXPECT_EQ(scripted("a"_s)->stops, 1);
    EXPECT_TRUE(isPlaying());
    scripted("a"_s)->reportStopped();
    settle();
    EXPECT_FALSE(isPlaying());
}

TEST_F(AudioSequenceTest, HandlesAnAcquireAnsweredAtOnceFromTheEventLoop)
{
    // Without a node the reply is finished when the request returns.
    services().withdraw(resources());
    enqueue("a"_s);
    EXPECT_EQ(journalOf("a"_s), QStringList{"cancelled"_s});
    std::vector<std::string> order;
    for (const auto &record : log().records()) {
        if (record.message.find("continuePlayAudioMuted()") != std::string::npos ||
            record.message.find("handleRequestResourcesFinished(") != std::string::npos) {
            order.push_back(record.message.substr(0, 5));
        }
    }
    EXPECT_THAT(order, testing::ElementsAre("Enter", "Leave", "Enter", "Leave"));
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Failed to request resources, canceling notifications: There "
                                      "is no node at /powerManager/resourceRequest"),
              1);
}

TEST_F(AudioSequenceTest, QueuesItemsWhileAnAcquireIsOutstanding)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(enqueue(QString::number(i)).error().isError());
    }
    answer(resources());
    EXPECT_EQ(journalOf("a"_s).last(), "started"_s);
}

TEST_F(AudioSequenceTest, EndsCleanlyWhileAnAcquireIsOutstanding)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    unload();
    answer(resources());
    EXPECT_EQ(journalOf("a"_s), QStringList());
}

TEST_F(AudioSequenceTest, EndsCleanlyWhileADuckIsOutstanding)
{
    setDucking(ScriptedService::keep());
    enqueue("a"_s);
    unload();
    answer(ducking());
    EXPECT_EQ(sequence(), QStringList{"duck"_s});
}

TEST_F(AudioSequenceTest, ReleasesAnAcquiredResourceIfTheQueueIsEmptyByThen)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    cancel("a"_s);
    answer(resources());
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Expecting not empty queue!"), 1);
    EXPECT_TRUE(inactivityTimer()->isActive());
    EXPECT_FALSE(isPlaying());
    fireInactivityTimer();
    EXPECT_EQ(sequence(), (QStringList{"duck"_s, "acquire"_s, "release"_s, "unduck"_s}));
}

TEST_F(AudioSequenceTest, LogsAnEmptyQueueBeforeItGoesOn)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    cancel("a"_s);
    services().requests(resources()).back().reply().setValue(QVariant());
    beginStory();
    QCoreApplication::sendPostedEvents();
    EXPECT_THAT(
        story(),
        testing::ElementsAre(
            "TRACE Enter handleRequestResourcesFinished: ", "TRACE Enter playItemFromQueue: ",
            "ERROR Expecting not empty queue!", "TRACE Enter continuePlayAudio: queue size: 0",
            "DEBUG Leave continuePlayAudio: No next item to play",
            "TRACE Leave playItemFromQueue: ", "TRACE Leave handleRequestResourcesFinished: "));
}

TEST_F(AudioSequenceTest, PlaysAnItemQueuedWhileTheAcquireForACancelledOneIsOutstanding)
{
    setResources(ScriptedService::keep());
    enqueue("a"_s);
    cancel("a"_s);
    enqueue("b"_s);
    answer(resources());
    EXPECT_EQ(sequence(), (QStringList{"duck"_s, "acquire"_s}));
    EXPECT_EQ(journalOf("b"_s).last(), "started"_s);
}
