// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The steps after the last item: the inactivity timer, releasing, unducking.

#include "NotificationsTest.h"

namespace {
using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;

class IdlePathTest : public NotificationsTest
{
protected:
    IdlePathTest() { load(); }

    void playToTheEnd(const QString &id)
    {
        play(id)->reportEnded();
        settle();
    }

    QStringList sinceThen()
    {
        const QStringList lines = journal();
        journal().clear();
        return lines;
    }
};
} // namespace

TEST_F(IdlePathTest, StartsTheTimerAndIsNotPlaying)
{
    playToTheEnd("a"_s);
    EXPECT_TRUE(inactivityTimer()->isActive());
    EXPECT_FALSE(isPlaying());
    EXPECT_EQ(left(DEBUG_LOG_LEVEL, "continuePlayAudio", "No next item to play"), 1);
}

TEST_F(IdlePathTest, ReleasesThenUnducksWhenTheTimerFires)
{
    playToTheEnd("a"_s);
    sinceThen();
    fireInactivityTimer();
    EXPECT_EQ(sinceThen(), (QStringList{"release"_s, "unduck"_s}));
    const TavoPowerManagerResourceRequest release(
        services().requests(TavoPowerManagerResourceRequestPath()).back().value().toHash());
    EXPECT_EQ(release.moduleName(), TavoNotificationsName());
    EXPECT_EQ(int(release.resource()), 2);
    EXPECT_EQ(int(release.action()), 2);
    const TavoPlayerAudioDuckingRequest unduck(
        services().requests(TavoPlayerMainAudioDuckingPath()).back().value().toHash());
    EXPECT_FALSE(unduck.duckAudio());
    EXPECT_EQ(unduck.requester(), TavoNotificationsName());
}

TEST_F(IdlePathTest, WaitsForAHundredMilliseconds)
{
    const ScriptedPlayer *last = play("a"_s);
    QElapsedTimer elapsed;
    elapsed.start();
    last->reportEnded();
    ASSERT_TRUE(waitFor([this] { return journal().contains("unduck"_s); }));
    EXPECT_GE(elapsed.elapsed(), 99); // timer and test may round differently
}

TEST_F(IdlePathTest, UnducksWithoutAReleaseIfTheResourceWasRevoked)
{
    playToTheEnd("a"_s);
    revoke(TavoPowerManagerRevokeMessageType::Revoked);
    sinceThen();
    fireInactivityTimer();
    EXPECT_EQ(sinceThen(), QStringList{"unduck"_s});
}

TEST_F(IdlePathTest, PlaysAnItemAtOnceThatComesBeforeTheTimerFires)
{
    playToTheEnd("a"_s);
    sinceThen();
    play("b"_s);
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Stopping unmute timer"), 1);
    EXPECT_FALSE(inactivityTimer()->isActive());
    EXPECT_EQ(sinceThen(), (QStringList{"b construct"_s, "b play"_s, "b started"_s}));
}

TEST_F(IdlePathTest, AcquiresAgainAfterARevoke)
{
    playToTheEnd("a"_s);
    revoke(TavoPowerManagerRevokeMessageType::Revoked);
    sinceThen();
    play("b"_s);
    EXPECT_EQ(sinceThen().first(), "acquire"_s);
}

TEST_F(IdlePathTest, DucksAgainForAnItemThatComesWhileUnducking)
{
    playToTheEnd("a"_s);
    setDucking(ScriptedService::keep());
    fireInactivityTimer();
    enqueue("b"_s);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "continuePlayAudio", "Active request"), 1);
    sinceThen();
    // The first request, to duck, has been answered by the script.
    services().requests(TavoPlayerMainAudioDuckingPath()).at(1).reply().setValue(QVariant());
    settle();
    EXPECT_EQ(sinceThen(), QStringList{"duck"_s});
    services().requests(TavoPlayerMainAudioDuckingPath()).at(2).reply().setValue(QVariant());
    settle();
    EXPECT_EQ(sinceThen(), (QStringList{"acquire"_s, "b construct"_s, "b play"_s, "b started"_s}));
}

TEST_F(IdlePathTest, IsIdleAfterTheUnduckAndStartsOver)
{
    playToTheEnd("a"_s);
    fireInactivityTimer();
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "on_audioUnducking_finished", ""), 1);
    EXPECT_FALSE(inactivityTimer()->isActive());
    sinceThen();
    play("b"_s);
    EXPECT_EQ(sinceThen().mid(0, 2), (QStringList{"duck"_s, "acquire"_s}));
}

TEST_F(IdlePathTest, StartsTheTimerOnlyOnceStoppingItemsHaveStopped)
{
    play("a"_s, 1);
    play("b"_s, 2); // pauses a
    cancel("a"_s);
    scripted("b"_s)->reportEnded();
    settle();
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Notification queue is empty"), 1);
    EXPECT_FALSE(inactivityTimer()->isActive());
    EXPECT_TRUE(isPlaying());
    scripted("a"_s)->reportStopped();
    settle();
    EXPECT_TRUE(inactivityTimer()->isActive());
    EXPECT_FALSE(isPlaying());
}

TEST_F(IdlePathTest, StartsTheTimerAgainWhileAnAcquireIsOutstanding)
{
    play("a"_s, 1);
    play("b"_s, 2); // pauses a
    revoke(TavoPowerManagerRevokeMessageType::PostRevoked);
    setResources(ScriptedService::keep());
    scripted("b"_s)->reportEnded(); // sends the acquire for a
    settle();
    cancel("a"_s);
    scripted("a"_s)->reportStopped();
    settle();
    ASSERT_TRUE(inactivityTimer()->isActive());
    sinceThen();

    fireInactivityTimer();
    EXPECT_TRUE(inactivityTimer()->isActive());
    EXPECT_EQ(sinceThen(), QStringList());

    services().requests(TavoPowerManagerResourceRequestPath()).back().reply().setValue(QVariant());
    settle();
    fireInactivityTimer();
    EXPECT_EQ(sinceThen(), (QStringList{"release"_s, "unduck"_s}));
}

TEST_F(IdlePathTest, ForgetsTheResourceOnTheNoticeAfterARevoke)
{
    playToTheEnd("a"_s);
    revoke(TavoPowerManagerRevokeMessageType::PostRevoked);
    EXPECT_TRUE(inactivityTimer()->isActive());
    sinceThen();
    fireInactivityTimer();
    EXPECT_EQ(sinceThen(), QStringList{"unduck"_s});
}

TEST_F(IdlePathTest, TracesTheTimeout)
{
    playToTheEnd("a"_s);
    fireInactivityTimer();
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "on_inactivityTimer_timeout", ""), 1);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "on_inactivityTimer_timeout", ""), 1);
}

TEST_F(IdlePathTest, DoesNotCheckTheRelease)
{
    playToTheEnd("a"_s);
    setResources(ScriptedService::refuse("no"_s));
    fireInactivityTimer();
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 0);
    EXPECT_EQ(log().countAt(log4cplus::ERROR_LOG_LEVEL), 0);
}
