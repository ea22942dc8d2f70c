// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Queueing of items: refusals, their order, and pre-emption.

#include "NotificationsTest.h"

#include <limits>

namespace {
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;

class SoundQueueTest : public NotificationsTest
{
protected:
    SoundQueueTest() { load(); }

    /// The ids of the queued items in order, from the newest listing in the log.
    QStringList queue() const
    {
        QStringList ids;
        for (const auto &record : const_cast<SoundQueueTest *>(this)->log().records()) {
            const QString line = QString::fromStdString(record.message);
            if (line.contains("dump after"_s)) {
                ids.clear();
            } else if (line.startsWith("dump --  "_s)) {
                ids.append(line.mid(9).section(QLatin1Char(' '), 0, 0));
            }
        }
        return ids;
    }

    static QStringList ids(const char *text)
    {
        return QString::fromLatin1(text).split(QLatin1Char(' '));
    }
};
} // namespace

TEST_F(SoundQueueTest, LogsANewItemWithTypeAndPriority)
{
    enqueue("a"_s, 2);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "enqueue", "new item a type Uri prio High"), 1);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "enqueue", ""), 1);
}

TEST_F(SoundQueueTest, PutsTheFirstItemIntoTheEmptyQueueAndGoesOn)
{
    enqueue("a"_s);
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "insert item as first"), 1);
    EXPECT_EQ(queue(), ids("a"));
    EXPECT_GE(entered(TRACE_LOG_LEVEL, "continuePlayAudio", "queue size: 1"), 1);
}

TEST_F(SoundQueueTest, QueuesAnItemBehindThoseOfTheSamePriority)
{
    play("a"_s, 5);
    enqueue("b"_s, 5);
    enqueue("c"_s, 5);
    EXPECT_EQ(queue(), ids("a b c"));
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "inserting after 1 id b"), 1);
    EXPECT_EQ(scripted("a"_s)->pauses, 0);
}

TEST_F(SoundQueueTest, QueuesALessUrgentItemWithoutPausingTheHead)
{
    play("a"_s, 5);
    enqueue("b"_s, 3);
    enqueue("c"_s, 4);
    EXPECT_EQ(queue(), ids("a c b"));
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "inserting after 0 id a"), 2);
    EXPECT_EQ(scripted("a"_s)->pauses, 0);
}

TEST_F(SoundQueueTest, PausesThePlayingHeadForAMoreUrgentItem)
{
    play("a"_s, 5);
    play("b"_s, 7);
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Inserting before first"), 1);
    EXPECT_EQ(queue(), ids("b a"));
    EXPECT_EQ(journalOf("a"_s).mid(0, 4),
              (QStringList{"construct"_s, "play"_s, "started"_s, "pause"_s}));
}

TEST_F(SoundQueueTest, DoesNotPauseAHeadThatHasNoPlayerYet)
{
    setDucking(ScriptedService::keep());
    enqueue("a"_s, 5);
    enqueue("b"_s, 7);
    EXPECT_EQ(queue(), ids("b a"));
    EXPECT_TRUE(ScriptedPlayers::instance().all().empty());
}

TEST_F(SoundQueueTest, PausesAHeadThatHasAPlayerOnceForEachItemThatPreemptsIt)
{
    play("a"_s, 5);
    revoke(TavoPowerManagerRevokeMessageType::PostRevoked);
    setResources(ScriptedService::keep()); // keeps the others from playing
    enqueue("b"_s, 7);
    EXPECT_EQ(scripted("a"_s)->pauses, 1);
    cancel("b"_s);
    // Now a is the head again; it has a player but is not the active item.
    enqueue("c"_s, 7);
    EXPECT_EQ(scripted("a"_s)->pauses, 2);
    EXPECT_EQ(queue(), ids("c a"));
}

TEST_F(SoundQueueTest, ListsTheQueueBeforeItGoesOn)
{
    play("a"_s);
    const CMReply<QVariant> reply;
    CMRoot()->invoke(TavoNotificationPlayerEnqueuePath(),
                     TavoValue().setNotificationPlayerItem(item("b"_s)), reply);
    beginStory();
    settle();
    EXPECT_THAT(
        story(),
        testing::ElementsAre(
            testing::StartsWith("DEBUG Enter on_notificationPlayerEnqueue_activated: item: "),
            "TRACE Enter enqueue: new item b type Uri prio Normal", "TRACE inserting after 0 id a",
            "TRACE Enter dumpQueue: dump after enqueue", "TRACE dump --  a type Uri prio Normal",
            "TRACE dump --  b type Uri prio Normal",
            "TRACE Leave dumpQueue: ", "TRACE Enter continuePlayAudio: queue size: 2",
            "TRACE Leave continuePlayAudio: Playback active: a", "TRACE Leave enqueue: "));
}

TEST_F(SoundQueueTest, PlaysAnItemThatPreemptsTheHeadAlthoughACancelledOneIsStillStopping)
{
    play("a"_s, 5);
    enqueue("b"_s, 5);
    cancel("a"_s);
    EXPECT_EQ(scripted("b"_s), nullptr);
    play("c"_s, 7);
    EXPECT_EQ(queue(), ids("c b"));
    EXPECT_EQ(scripted("b"_s), nullptr);
}

TEST_F(SoundQueueTest, QueuesThePreemptingItemBeforeItPausesTheHead)
{
    // A player may report an error from inside pause().
    play("a"_s, 5);
    ScriptedPlayers::instance().onCall = [](const QString &call, const QString &id) {
        if (call == "pause"_s) {
            scripted(id)->reportError("cannot pause"_s);
        }
    };
    enqueue("b"_s, 7);
    EXPECT_EQ(logged(log4cplus::DEBUG_LOG_LEVEL, "Not a first item finished 1"), 1);
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "Active notification stopped"), 0);
    EXPECT_EQ(scripted("b"_s)->plays, 1);
}

TEST_F(SoundQueueTest, ComparesPrioritiesAsSignedNumbers)
{
    setDucking(ScriptedService::keep());
    enqueue("zero"_s, 0);
    enqueue("least"_s, std::numeric_limits<int>::min());
    enqueue("most"_s, std::numeric_limits<int>::max());
    enqueue("below"_s, -1);
    EXPECT_EQ(queue(), ids("most zero below least"));
}

TEST_F(SoundQueueTest, KeepsTheOrderOfArrivalAmongManyOfMixedPriorities)
{
    setDucking(ScriptedService::keep());
    QStringList expected[4];
    for (int i = 0; i < 40; ++i) {
        const int priority = (i * 7) % 4;
        const QString id = "n%1"_s.arg(i);
        expected[priority].append(id);
        enqueue(id, priority);
    }
    EXPECT_EQ(queue(), expected[3] + expected[2] + expected[1] + expected[0]);
}

TEST_F(SoundQueueTest, KeepsTheOrderWhenItemsAreCancelledAndQueuedAgain)
{
    setDucking(ScriptedService::keep());
    constexpr int count = 40;
    QStringList expected[4];
    for (int i = 0; i < count; ++i) {
        enqueue("n%1"_s.arg(i), (i * 7) % 4);
        expected[(i * 7) % 4].append("n%1"_s.arg(i));
    }
    // Cancel every third item, in mixed order, and queue every second of them again with another
    // priority.
    for (int n = 0; n < count; n += 3) {
        const int i = (n * 11) % count;
        const QString id = "n%1"_s.arg(i);
        EXPECT_EQ(message(cancel(id)), QString());
        expected[(i * 7) % 4].removeOne(id);
        if (n % 2 == 0) {
            enqueue(id, n % 4);
            expected[n % 4].append(id);
        }
    }
    enqueue("last"_s, 0);
    EXPECT_EQ(queue(), expected[3] + expected[2] + expected[1] + expected[0] + ids("last"));
}

TEST_F(SoundQueueTest, RefusesAnEmptyIdBeforeAnythingElse)
{
    enqueue(QString());
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Notification item id is empty"), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "dumpQueue", "dump after enqueue"), 0);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "continuePlayAudio", "queue size: 0"), 0);
    EXPECT_EQ(journal(), QStringList{"register"_s});
}

TEST_F(SoundQueueTest, RefusesAnIdInTheQueueAndDoesNotChangeTheQueue)
{
    play("a"_s);
    log().clear();
    enqueue("a"_s, 9);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "dumpQueue", "dump after enqueue"), 0);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "continuePlayAudio", "queue size: 1"), 0);
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Notification with the same id already exists"), 1);
    enqueue("b"_s);
    EXPECT_EQ(queue(), ids("a b"));
    EXPECT_EQ(journalOf("a"_s).last(), "started"_s);
}

TEST_F(SoundQueueTest, ComparesIdsExactly)
{
    play("a"_s);
    enqueue("A"_s);
    EXPECT_EQ(queue(), ids("a A"));
}

TEST_F(SoundQueueTest, RefusesAnIdThatIsStillStoppingAndAdmitsItAfterwards)
{
    play("a"_s);
    cancel("a"_s);
    EXPECT_TRUE(enqueue("a"_s).error().isError());
    EXPECT_EQ(logged(ERROR_LOG_LEVEL, "Notification with the same id already exists"), 1);
    scripted("a"_s)->reportStopped();
    settle();
    EXPECT_FALSE(enqueue("a"_s).error().isError());
}

TEST_F(SoundQueueTest, ListsTheQueueWithTypesAndPrioritiesInOrder)
{
    setDucking(ScriptedService::keep());
    enqueue(item("a"_s, 3).setType(TavoNotificationPlayerItemType::Fake));
    log().clear();
    enqueue(item("b"_s, 42).setType(TavoNotificationPlayerItemType::Enum(9)));
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "dumpQueue", "dump after enqueue"), 1);
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "dump --  b type 9 prio 42"), 1);
    EXPECT_EQ(logged(TRACE_LOG_LEVEL, "dump --  a type Fake prio Urgent"), 1);
    EXPECT_EQ(left(TRACE_LOG_LEVEL, "dumpQueue", ""), 1);
}

TEST_F(SoundQueueTest, DoesNotListTheQueueWhenTraceIsOnlyInherited)
{
    auto logger = log4cplus::Logger::getInstance("Notifications");
    auto root = log4cplus::Logger::getRoot();
    const log4cplus::LogLevel rootLevel = root.getLogLevel();
    root.setLogLevel(TRACE_LOG_LEVEL);
    logger.setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
    enqueue("a"_s);
    root.setLogLevel(rootLevel);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "dumpQueue", "dump after enqueue"), 1);
    EXPECT_TRUE(queue().isEmpty());
}

TEST_F(SoundQueueTest, DoesNotListStoppingItems)
{
    play("a"_s);
    cancel("a"_s);
    enqueue("b"_s);
    EXPECT_EQ(queue(), ids("b"));
}
