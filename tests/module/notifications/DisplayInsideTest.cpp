// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The private parts of the display controller: states that no request leads to.

#include "modules/notifications/NotificationDisplay.h"
#include "NotificationsTest.h"
#include "support/clock/VirtualClock.h"

#include <chrono>
#include <limits>

/// Gives the tests access to private members.
struct NotificationDisplayAccess : NotificationDisplay
{
    using NotificationDisplay::NotificationDisplay;

    using NotificationDisplay::on_closeTimer_timeout;
    using NotificationDisplay::on_subscribe_rowsChanged;
    using NotificationDisplay::queuePosition;
    using NotificationDisplay::removeNotificationItem;

    using NotificationDisplay::m_closeTimer;
    using NotificationDisplay::m_messageNodes;
    using NotificationDisplay::m_queue;
    using NotificationDisplay::m_queueNode;
    using NotificationDisplay::m_shownTimer;
};

namespace {
using log4cplus::FATAL_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;
using namespace std::chrono_literals;

class DisplayInsideTest : public NotificationsTest
{
protected:
    DisplayInsideTest()
        : m_display(&m_nodes, nullptr)
    {
    }

    NotificationDisplayAccess &controller() { return m_display; }

    CMPath open(const QString &text, const TrString &title = {})
    {
        TavoNotificationDisplayItem item;
        item.setMessage(text).setTitle(title);
        EXPECT_TRUE(controller().enqueue(&item));
        return item.path();
    }

    /// Enqueues a notification of the highest priority.
    void preempt()
    {
        TavoNotificationDisplayItem urgent;
        urgent.setMessage("urgent"_s).setPriority(TavoNotificationItemPriority::Urgent);
        EXPECT_TRUE(controller().enqueue(&urgent));
    }

    CMPath openReference(const CMPath &path)
    {
        TavoNotificationDisplayItem item;
        item.setPath(path);
        EXPECT_TRUE(controller().enqueue(&item));
        return item.path();
    }

    /// Gives a row another path than its notification has.
    void replaceRow(int index, const CMPath &path)
    {
        controller().m_queueNode->rowsRemoveAt(index);
        controller().m_queueNode->rowsInsert(index, path);
    }

private:
    CMNodes m_nodes;
    NotificationDisplayAccess m_display;
};

using DisplayInsideDeathTest = DisplayInsideTest;
} // namespace

TEST_F(DisplayInsideTest, TitlesTheQueueFromTheStart)
{
    EXPECT_EQ(controller().m_queueNode->title(), TrString("List of messages"));
    EXPECT_FALSE(controller().m_queueNode->title().isTranslatable());
    EXPECT_TRUE(controller().m_queueNode->rowsRoles().isEmpty());
    EXPECT_FALSE(controller().m_shownTimer.isValid());
}

TEST_F(DisplayInsideTest, GivesAMessageWithoutATitleATranslatableOne)
{
    open("text"_s);
    EXPECT_EQ(controller().m_messageNodes.first()->title(),
              TrString(TrCharData{"NotificationDisplay", "Message", nullptr, -1}, {}));
}

TEST_F(DisplayInsideTest, TitlesAMessageWithItsOwnTitle)
{
    open("text"_s, "title");
    EXPECT_EQ(controller().m_messageNodes.first()->title(), TrString("title"));
    EXPECT_FALSE(controller().m_messageNodes.first()->title().isTranslatable());
}

TEST_F(DisplayInsideTest, KeepsATitleTranslatable)
{
    const TrString title(TrCharData{"Door", "The door", nullptr, -1}, {});
    open("text"_s, title);
    EXPECT_EQ(controller().m_messageNodes.first()->title(), title);
    EXPECT_TRUE(controller().m_messageNodes.first()->title().isTranslatable());
}

TEST_F(DisplayInsideTest, AnnouncesTheOneRoleOfAMessagesRows)
{
    open("text"_s);
    EXPECT_EQ(controller().m_messageNodes.first()->rowsRoles().type().elements(), QVariantList{0});
}

TEST_F(DisplayInsideTest, FilesAMessagesNodeUnderItsIdentifier)
{
    const CMPath path = open("text"_s);
    EXPECT_EQ(controller().m_messageNodes.keys(), QStringList{path.name()});
    EXPECT_EQ(controller().m_messageNodes.first()->path(), path);
}

TEST_F(DisplayInsideTest, SetsThePathInTheCallersRecordAndNothingElse)
{
    const auto record = TavoNotificationDisplayItem()
                            .setId("mine"_s)
                            .setTitle("title")
                            .setMessage("text")
                            .setTimeout(7)
                            .setPriority(TavoNotificationItemPriority::High);
    TavoNotificationDisplayItem item = record;
    ASSERT_TRUE(controller().enqueue(&item));
    EXPECT_EQ(controller().m_messageNodes.keys(), QStringList{item.path().name()});
    EXPECT_EQ(item, TavoNotificationDisplayItem(record).setPath(item.path()));
}

TEST_F(DisplayInsideTest, OpensARecordThatIsEnqueuedTwiceAsTwoMessages)
{
    auto item = TavoNotificationDisplayItem().setTitle("title").setMessage("text");
    ASSERT_TRUE(controller().enqueue(&item));
    const CMPath first = item.path();
    ASSERT_TRUE(controller().enqueue(&item));
    EXPECT_NE(item.path(), first);
    ASSERT_EQ(controller().m_messageNodes.size(), 2);
    for (const CMListRowsNode *node : qAsConst(controller().m_messageNodes)) {
        EXPECT_EQ(node->title(), TrString("title"));
        ASSERT_EQ(node->rowsSize(), 1);
        EXPECT_EQ(TavoRoles(node->getRow(0).toHash()).title(), TrString("text"));
    }
}

TEST_F(DisplayInsideTest, FindsThePositionBehindEqualAndHigherPriorities)
{
    using Priority = TavoNotificationItemPriority;
    EXPECT_EQ(controller().queuePosition(Priority::Low), 0);
    for (const auto priority : {Priority::High, Priority::Normal, Priority::Normal}) {
        TavoNotificationDisplayItem item;
        item.setMessage("text"_s).setPriority(priority);
        controller().enqueue(&item);
    }
    EXPECT_EQ(controller().queuePosition(Priority::Urgent), 0);
    EXPECT_EQ(controller().queuePosition(Priority::High), 1);
    EXPECT_EQ(controller().queuePosition(Priority::Normal), 3);
    EXPECT_EQ(controller().queuePosition(Priority::Low), 3);
}

TEST_F(DisplayInsideTest, RefusesToRemoveFromTheEmptyQueue)
{
    EXPECT_FALSE(controller().removeNotificationItem(0));
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Item index out of bounds (cannot remove) 0"), 1);
}

TEST_F(DisplayInsideTest, RefusesToRemoveBeyondTheQueueOrTheRows)
{
    open("a"_s);
    EXPECT_FALSE(controller().removeNotificationItem(1));
    controller().m_queueNode->rowsRemoveAt(0);
    EXPECT_FALSE(controller().removeNotificationItem(0));
    EXPECT_EQ(controller().m_queue.size(), 1);
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Item index out of bounds (cannot remove) 1"), 1);
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Item index out of bounds (cannot remove) 0"), 1);
}

TEST_F(DisplayInsideTest, RefusesToRemoveARowThatHasNoItem)
{
    open("a"_s);
    controller().m_queueNode->rowsInsert(1, CMPath("/stray"_s));
    EXPECT_FALSE(controller().removeNotificationItem(1));
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Item index out of bounds (cannot remove) 1"), 1);
    EXPECT_EQ(controller().m_queue.size(), 1);
    EXPECT_EQ(controller().m_queueNode->rowsSize(), 2);
    EXPECT_TRUE(controller().removeNotificationItem(0));
}

TEST_F(DisplayInsideTest, StopsACancelWhenQueueAndRowsDisagree)
{
    const CMPath path = open("a"_s);
    replaceRow(0, CMPath("/other"_s));
    EXPECT_FALSE(controller().cancel(path));
    EXPECT_EQ(logged(FATAL_LOG_LEVEL, "Notification with selected path was not found in queue"), 1);
    EXPECT_EQ(controller().m_queue.size(), 1);
}

TEST_F(DisplayInsideTest, KeepsEarlierRemovalsAndTheTimerWhenACancelStops)
{
    TavoNotificationDisplayItem head;
    head.setPath(CMPath("/shared"_s)).setTimeout(60000);
    TavoNotificationDisplayItem copy = head;
    controller().enqueue(&head);
    open("other"_s);
    controller().enqueue(&copy);
    replaceRow(0, CMPath("/other"_s));
    controller().m_closeTimer.setInterval(30000); // so that a restart can be seen
    EXPECT_FALSE(controller().cancel(CMPath("/shared"_s)));
    EXPECT_EQ(controller().m_queue.size(), 2);
    EXPECT_TRUE(controller().m_closeTimer.isActive());
    EXPECT_EQ(controller().m_closeTimer.interval(), 30000);
}

TEST_F(DisplayInsideTest, GoesOnAfterACancelThatWasStopped)
{
    const CMPath shared("/shared"_s);
    for (const CMPath &path : {shared, shared, CMPath("/a"_s), shared}) {
        openReference(path);
    }
    replaceRow(1, CMPath("/other"_s));
    EXPECT_FALSE(controller().cancel(shared)); // the last of the three was removed
    EXPECT_EQ(controller().m_queue.size(), 3);

    openReference(CMPath("/b"_s));
    EXPECT_TRUE(controller().cancel(CMPath("/a"_s)));
    replaceRow(1, shared);
    EXPECT_TRUE(controller().cancel(shared));
    ASSERT_EQ(controller().m_queue.size(), 1);
    EXPECT_EQ(controller().m_queue.first().path(), CMPath("/b"_s));
    EXPECT_EQ(controller().m_queueNode->rowsSize(), 1);
    EXPECT_FALSE(controller().cancel(shared));
}

TEST_F(DisplayInsideTest, ForgetsANodeThatIsDisposedOfWithItsNamesake)
{
    const CMPath path = open("a"_s);
    TavoNotificationDisplayItem namesake;
    namesake.setMessage("b"_s).setId(path.name());
    controller().enqueue(&namesake);
    EXPECT_TRUE(controller().m_messageNodes.contains(path.name()));
    controller().cancel(namesake.path());
    EXPECT_FALSE(controller().m_messageNodes.contains(path.name()));
}

TEST_F(DisplayInsideTest, RemovesAHeadWhoseTimeoutHasJustPassed)
{
    VirtualClock clock;
    TavoNotificationDisplayItem head;
    head.setMessage("a"_s).setTimeout(60000);
    controller().enqueue(&head);
    clock.advance(60s);
    preempt();
    EXPECT_EQ(controller().m_queue.size(), 1);
}

TEST_F(DisplayInsideTest, LogsThatAHeadIsOverdueBeforeItRemovesIt)
{
    VirtualClock clock;
    auto item = TavoNotificationDisplayItem().setPath(CMPath("/late"_s)).setTimeout(2);
    controller().enqueue(&item);
    clock.advance(5ms);
    item.setPath(CMPath("/urgent"_s)).setPriority(TavoNotificationItemPriority::Urgent);
    beginStory();
    controller().enqueue(&item);
    EXPECT_THAT(
        story(),
        testing::ElementsAre(
            "TRACE Enter enqueue: ", "TRACE Enter queuePosition: ", "TRACE Leave queuePosition: ",
            "WARN The item should have been expired, elapsed: 5 item length 2 , removing",
            "TRACE Enter removeNotificationItem: queue size: 1 notifs: 1 index 0",
            "TRACE Leave removeNotificationItem: queue: 0",
            "TRACE Enter startTimer: ", "TRACE Leave startTimer: ", "TRACE Leave enqueue: "));
}

TEST_F(DisplayInsideTest, ComparesTheShownTimeAsASigned32BitNumber)
{
    constexpr int longest = std::numeric_limits<int>::max();
    VirtualClock clock;
    TavoNotificationDisplayItem head;
    head.setMessage("a"_s).setTimeout(longest);
    controller().enqueue(&head);
    clock.advance(std::chrono::milliseconds(longest) + 10s);
    preempt();
    ASSERT_EQ(controller().m_queue.size(), 2);
    EXPECT_EQ(controller().m_queue.last().timeout(), -10000);
}

TEST_F(DisplayInsideTest, ShowsANotificationOfOneMillisecondWithATimer)
{
    VirtualClock clock;
    TavoNotificationDisplayItem item;
    item.setMessage("a"_s).setTimeout(1);
    controller().enqueue(&item);
    EXPECT_TRUE(controller().m_closeTimer.isActive());
    clock.advance(1ms);
    preempt();
    EXPECT_EQ(controller().m_queue.size(), 1);
}

TEST_F(DisplayInsideTest, LeavesTheTimeoutOfAnUntimedHeadAsItIs)
{
    for (const int timeout : {0, -1, -5000}) {
        VirtualClock clock;
        TavoNotificationDisplayItem head;
        head.setMessage("a"_s).setTimeout(timeout);
        controller().enqueue(&head);
        clock.advance(20ms);
        preempt();
        ASSERT_EQ(controller().m_queue.size(), 2);
        EXPECT_EQ(controller().m_queue.last().timeout(), timeout);
        for (const int index : {1, 0}) {
            controller().removeNotificationItem(index);
        }
    }
}

TEST_F(DisplayInsideTest, ReadsThePublishedRowsAfterTheTimer)
{
    TavoNotificationDisplayItem item;
    item.setMessage("a"_s).setTimeout(1000);
    controller().enqueue(&item);
    controller().enqueue(&item);
    controller().m_queueNode->rowsRemoveAt(1);
    controller().m_closeTimer.stop();
    controller().on_closeTimer_timeout();
    // One is left in the queue, but it has no row.
    EXPECT_EQ(controller().m_queue.size(), 1);
    EXPECT_FALSE(controller().m_closeTimer.isActive());
}

TEST_F(DisplayInsideTest, LooksForAHeadAfterTheTimerAsLongAsThereAreRows)
{
    TavoNotificationDisplayItem item;
    item.setMessage("a"_s).setTimeout(1000);
    controller().enqueue(&item);
    controller().m_queueNode->rowsInsert(1, CMPath("/stray"_s));
    controller().m_closeTimer.stop();
    log().clear();
    controller().on_closeTimer_timeout();
    EXPECT_TRUE(controller().m_queue.isEmpty());
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "startTimer", ""), 1);
    EXPECT_FALSE(controller().m_closeTimer.isActive());
}

TEST_F(DisplayInsideDeathTest, ANegativeIndex)
{
    open("a"_s);
    EXPECT_DEATH(controller().removeNotificationItem(-1), "index out of range");
}

TEST_F(DisplayInsideDeathTest, ASubscriptionThatIsNotThere)
{
    const CMPath path = open("a"_s);
    CMRoot()->disconnectRowsChange(path, static_cast<NotificationDisplay *>(&controller()),
                                   &NotificationDisplayAccess::on_subscribe_rowsChanged);
    EXPECT_DEATH(controller().cancel(path), "\"disconnectSucceeded\"");
}
