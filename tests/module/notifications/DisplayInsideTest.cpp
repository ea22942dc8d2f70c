// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The display controller from within: what no request can bring about.

#include "NotificationsTest.h"

#include "modules/notifications/NotificationDisplay.h"

#include <limits>

namespace {
using log4cplus::FATAL_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;

class DisplayInsideTest : public NotificationsTest
{
protected:
    DisplayInsideTest()
        : m_display(&m_nodes, nullptr)
    {
    }

    NotificationDisplay &controller() { return m_display; }

    CMPath open(const QString &text, const TrString &title = {})
    {
        TavoNotificationDisplayItem item;
        item.setMessage(text).setTitle(title);
        EXPECT_TRUE(controller().enqueue(&item));
        return item.path();
    }

    /// Makes the head shown for so many seconds more.
    void shiftShownTimer(int seconds) { m_display.m_shownTimer.t1 -= seconds; }

private:
    CMNodes m_nodes;
    NotificationDisplay m_display;
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

TEST_F(DisplayInsideTest, TitlesAMessageWithoutATitleTranslatably)
{
    open("text"_s);
    EXPECT_EQ(controller().m_messageNodes.first()->title(),
              TrString(TrCharData{"NotificationDisplay", "Message", nullptr, -1}, {}));
}

TEST_F(DisplayInsideTest, TitlesAMessageWithItsOwnTitle)
{
    open("text"_s, "title");
    EXPECT_EQ(controller().m_messageNodes.first()->title(), TrString("title"));
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

TEST_F(DisplayInsideTest, GivesTheCallersRecordItsPathAndLeavesTheRestOfItAlone)
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

TEST_F(DisplayInsideTest, StopsACancelWhereQueueAndRowsDisagree)
{
    const CMPath path = open("a"_s);
    controller().m_queueNode->rowsRemoveAt(0);
    controller().m_queueNode->rowsInsert(0, CMPath("/other"_s));
    EXPECT_FALSE(controller().cancel(path));
    EXPECT_EQ(logged(FATAL_LOG_LEVEL, "Notification with selected path was not found in queue"), 1);
    EXPECT_EQ(controller().m_queue.size(), 1);
}

TEST_F(DisplayInsideTest, LetsEarlierRemovalsStandAndTheTimerRunWhereACancelStops)
{
    TavoNotificationDisplayItem head;
    head.setPath(CMPath("/shared"_s)).setTimeout(60000);
    TavoNotificationDisplayItem copy = head;
    controller().enqueue(&head);
    open("other"_s);
    controller().enqueue(&copy);
    controller().m_queueNode->rowsRemoveAt(0);
    controller().m_queueNode->rowsInsert(0, CMPath("/other"_s));
    controller().m_closeTimer.setInterval(30000); // tells a restart
    EXPECT_FALSE(controller().cancel(CMPath("/shared"_s)));
    EXPECT_EQ(controller().m_queue.size(), 2);
    EXPECT_TRUE(controller().m_closeTimer.isActive());
    EXPECT_EQ(controller().m_closeTimer.interval(), 30000);
}

TEST_F(DisplayInsideTest, ForgetsTheNodeThatWentWithItsNamesake)
{
    const CMPath path = open("a"_s);
    TavoNotificationDisplayItem namesake;
    namesake.setMessage("b"_s).setId(path.name());
    controller().enqueue(&namesake);
    EXPECT_TRUE(controller().m_messageNodes.contains(path.name()));
    controller().cancel(namesake.path());
    EXPECT_FALSE(controller().m_messageNodes.contains(path.name()));
}

TEST_F(DisplayInsideTest, RemovesAHeadWhoseTimeIsJustUsedUp)
{
    TavoNotificationDisplayItem head;
    head.setMessage("a"_s).setTimeout(60000);
    controller().enqueue(&head);
    shiftShownTimer(60);
    controller().m_queue.first().setTimeout(int(controller().m_shownTimer.elapsed()));
    TavoNotificationDisplayItem urgent;
    urgent.setMessage("b"_s).setPriority(TavoNotificationItemPriority::Urgent);
    controller().enqueue(&urgent);
    EXPECT_EQ(controller().m_queue.size(), 1);
}

TEST_F(DisplayInsideTest, ComparesTheShownTimeAsASigned32BitNumber)
{
    TavoNotificationDisplayItem head;
    head.setMessage("a"_s).setTimeout(std::numeric_limits<int>::max());
    controller().enqueue(&head);
    shiftShownTimer(std::numeric_limits<int>::max() / 1000 + 10);
    TavoNotificationDisplayItem urgent;
    urgent.setMessage("b"_s).setPriority(TavoNotificationItemPriority::Urgent);
    controller().enqueue(&urgent);
    EXPECT_EQ(controller().m_queue.size(), 2);
    EXPECT_LT(controller().m_queue.last().timeout(), 0);
}

TEST_F(DisplayInsideTest, ShowsOneOfASingleMillisecondWithATimer)
{
    TavoNotificationDisplayItem item;
    item.setMessage("a"_s).setTimeout(1);
    controller().enqueue(&item);
    EXPECT_TRUE(controller().m_closeTimer.isActive());
    shiftShownTimer(1);
    TavoNotificationDisplayItem urgent;
    urgent.setMessage("b"_s).setPriority(TavoNotificationItemPriority::Urgent);
    controller().enqueue(&urgent);
    EXPECT_EQ(controller().m_queue.size(), 1);
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
    // One is left in the queue, but no row says so.
    EXPECT_EQ(controller().m_queue.size(), 1);
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
    CMRoot()->disconnectRowsChange(path, &controller(),
                                   &NotificationDisplay::on_subscribe_rowsChanged);
    EXPECT_DEATH(controller().cancel(path), "\"disconnectSucceeded\"");
}
