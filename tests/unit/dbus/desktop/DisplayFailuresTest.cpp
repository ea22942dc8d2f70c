// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "OpenNotificationsTest.h"
#include "support/LogCapture.h"
#include "support/scripted/ScriptedService.h"

#include <functional>
#include <memory>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;
using Pair = std::pair<quint32, Reason>;
using End = TavoNotificationDisplayEnd;

/// With a display that the test plays.
class DisplayFailuresTest : public OpenNotificationsTest
{
protected:
    DisplayFailuresTest()
    {
        m_display = std::make_unique<ScriptedService>("Display"_s);
        CMListRowsNode::create(m_display->nodes(), TavoNotificationDisplayQueuePath());
        m_ended = CMValueNode::create(m_display->nodes(), TavoNotificationDisplayEndedPath());
        m_display->take(TavoNotificationDisplayOpenPath(), ScriptedService::keep());
        m_display->take(TavoNotificationDisplayCancelNotifyPath(), ScriptedService::accept());
    }

    quint32 openUnanswered(int timeout = 0)
    {
        const quint32 id = open(text("text"_s, timeout));
        EXPECT_THAT(ends, IsEmpty());
        return id;
    }

    /// What the display was last requested to show.
    TavoNotificationDisplayItem lastItem() const
    {
        return TavoValue(lastOpening().value().toHash()).notificationDisplayItem();
    }
    CMSetDataRequest lastOpening() const
    {
        return m_display->requests(TavoNotificationDisplayOpenPath()).back();
    }
    int openings() const { return m_display->count(TavoNotificationDisplayOpenPath()); }
    int cancels() const { return m_display->count(TavoNotificationDisplayCancelNotifyPath()); }

    void answer()
    {
        lastOpening().reply().setValue(QVariant());
        settle();
    }

    /// The display reports the end of what an earlier request showed.
    void end(const TavoNotificationDisplayItem &item, End::Enum how, int remaining = 0)
    {
        m_ended->setValue(TavoValue().setDisplayEnded(TavoNotificationDisplayEnded()
                                                          .setPath(item.path())
                                                          .setId(item.id())
                                                          .setEnd(how)
                                                          .setRemaining(remaining)
                                                          .setNumber(++m_ends)));
        settle();
    }

    void withdrawDisplay() { m_display.reset(); }

private:
    std::unique_ptr<ScriptedService> m_display;
    CMValueNode *m_ended = nullptr;
    int m_ends = 0;
};

TEST(NoDisplayTest, IsAnErrorAndLeavesNothingBehind)
{
    CMNodesWorker worker({}, "Dbus"_s);
    OpenNotifications notifications(worker.nodes());
    int ends = 0;
    QObject::connect(&notifications, &OpenNotifications::closed, [&] { ++ends; });
    const CMError error = notifications.open(1, DesktopNotification());
    EXPECT_EQ(error.name(), CMErrors::noSuchNode());
    settle();
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(notifications.count(), 0);
    EXPECT_EQ(worker.nodes()->size(), 0);
}

TEST_F(DisplayFailuresTest, CloseANotificationThatIsRefused)
{
    const LogCapture log("Dbus");
    const quint32 id = openUnanswered();
    lastOpening().reply().setError(CMError("Display"_s, "no room"));
    settle();
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Undefined)));
    EXPECT_EQ(log.messages(log4cplus::WARN_LOG_LEVEL),
              std::vector<std::string>{"Notification 1 is not shown: no room"});
}

TEST_F(DisplayFailuresTest, CloseEverythingWhenTheDisplayGoes)
{
    const quint32 first = openUnanswered();
    answer();
    const quint32 second = openUnanswered();
    withdrawDisplay();
    settle();
    EXPECT_THAT(ends, testing::UnorderedElementsAre(Pair(first, Reason::Undefined),
                                                    Pair(second, Reason::Undefined)));
    EXPECT_EQ(nodes(), 0U);
}

TEST_F(DisplayFailuresTest, DoNotIncludeClosingBeforeTheDisplayReplies)
{
    const quint32 id = openUnanswered();
    notifications.close(id, Reason::Closed);
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Closed)));
    answer();
    EXPECT_EQ(cancels(), 1);
    end(lastItem(), End::Cancelled);
    EXPECT_EQ(ends.size(), 1U);
}

TEST_F(DisplayFailuresTest, DoNotIncludeDismissingBeforeTheDisplayReplies)
{
    const quint32 id = openUnanswered();
    CMSubscribe::closeNode(NotificationNode::pathOf(id));
    settle();
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Dismissed)));
    // The display may not have been listening yet.
    EXPECT_EQ(cancels(), 1);
}

TEST_F(DisplayFailuresTest, DoNotPileUpRequestsForAChangingNotification)
{
    const quint32 id = openUnanswered(1000);
    notifications.replace(id, text("one"_s, 2000));
    notifications.replace(id, text("two"_s, 3000));
    settle();
    EXPECT_EQ(openings(), 1);
    answer();
    EXPECT_EQ(openings(), 2);
    EXPECT_EQ(cancels(), 1);
    EXPECT_EQ(lastItem().timeout(), 3000);
}

TEST_F(DisplayFailuresTest, DoNotConfuseTheEndOfAnEarlierShowingWithThatOfALaterOne)
{
    const quint32 id = openUnanswered(300);
    answer();
    const TavoNotificationDisplayItem earlier = lastItem();
    notifications.replace(id, text("new"_s, 60'000));
    settle();
    // It expired before the display handled our request.
    end(earlier, End::Expired);
    answer();
    EXPECT_THAT(ends, IsEmpty());
    end(lastItem(), End::Cancelled);
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Closed)));
}

TEST_F(DisplayFailuresTest, DoNotTakeTheEndOfAnothersRequestForTheSameNodeAsTheirOwn)
{
    const quint32 id = openUnanswered(60'000);
    answer();
    end(TavoNotificationDisplayItem().setPath(NotificationNode::pathOf(id)), End::Expired);
    EXPECT_THAT(ends, IsEmpty());
}

TEST_F(DisplayFailuresTest, GiveTheReasonThatTheDisplayGives)
{
    std::vector<quint32> ids;
    for (const End::Enum how :
         {End::Expired, End::Overtaken, End::Cancelled, End::Closed, End::Enum(99)}) {
        ids.push_back(open(text("text"_s)));
        answer();
        end(lastItem(), how);
    }
    EXPECT_THAT(ends, ElementsAre(Pair(ids[0], Reason::Expired), Pair(ids[1], Reason::Expired),
                                  Pair(ids[2], Reason::Closed), Pair(ids[3], Reason::Dismissed),
                                  Pair(ids[4], Reason::Undefined)));
}

TEST_F(DisplayFailuresTest, GiveWayWithTheRestOfTheirTime)
{
    const quint32 id = openUnanswered(60'000);
    answer();
    notifications.giveWay(id);
    settle();
    EXPECT_EQ(cancels(), 1);
    EXPECT_EQ(openings(), 1);
    end(lastItem(), End::Cancelled, 4321);
    ASSERT_EQ(openings(), 2);
    EXPECT_EQ(lastItem().timeout(), 4321);
    EXPECT_EQ(lastItem().priority(), TavoNotificationItemPriority::Low);
    EXPECT_THAT(ends, IsEmpty());
}

TEST_F(DisplayFailuresTest, EndOnceWhenTheyExpireInsteadOfGivingWay)
{
    const quint32 id = openUnanswered(60'000);
    answer();
    notifications.giveWay(id);
    end(lastItem(), End::Expired);
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Expired)));
    EXPECT_EQ(openings(), 1);
}

TEST_F(DisplayFailuresTest, MayBeDismissedWhileTheyGiveWay)
{
    const quint32 id = openUnanswered();
    answer();
    notifications.giveWay(id);
    CMSubscribe::closeNode(NotificationNode::pathOf(id));
    end(lastItem(), End::Cancelled);
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Dismissed)));
    EXPECT_EQ(openings(), 1);
}
} // namespace
