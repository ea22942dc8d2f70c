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

/// With a display that the test plays.
class DisplayFailuresTest : public OpenNotificationsTest
{
protected:
    DisplayFailuresTest()
    {
        m_display = std::make_unique<ScriptedService>("Display"_s);
        m_queue = CMListRowsNode::create(m_display->nodes(), TavoNotificationDisplayQueuePath());
        m_display->take(TavoNotificationDisplayOpenPath(), ScriptedService::keep());
        m_display->take(TavoNotificationDisplayCancelNotifyPath(), ScriptedService::accept());
    }

    quint32 openUnanswered(int timeout = 0)
    {
        const quint32 id = open(text("text"_s, timeout));
        EXPECT_THAT(ends, IsEmpty());
        return id;
    }

    CMSetDataRequest lastOpening() const
    {
        return m_display->requests(TavoNotificationDisplayOpenPath()).back();
    }
    int openings() const { return m_display->count(TavoNotificationDisplayOpenPath()); }
    int cancels() const { return m_display->count(TavoNotificationDisplayCancelNotifyPath()); }

    void answer()
    {
        m_queue->rowsInsert(m_queue->rowsSize(), CMPath("/some"_s));
        lastOpening().reply().setValue(QVariant());
        settle();
    }

    void withdrawDisplay() { m_display.reset(); }
    CMListRowsNode *queue() { return m_queue; }

private:
    std::unique_ptr<ScriptedService> m_display;
    CMListRowsNode *m_queue = nullptr;
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
    queue()->rowsRemoveAt(0);
    settle();
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
    const auto item = TavoValue(lastOpening().value().toHash()).notificationDisplayItem();
    EXPECT_EQ(item.timeout(), 3000);
}

TEST_F(DisplayFailuresTest, DoNotConfuseTheEndOfAnEarlierShowingWithThatOfALaterOne)
{
    const quint32 id = openUnanswered(300);
    answer();
    notifications.replace(id, text("new"_s, 60'000));
    settle();
    // It expired before the display handled our request.
    queue()->rowsRemoveAt(0);
    answer();
    EXPECT_THAT(ends, IsEmpty());
    queue()->rowsRemoveAt(0);
    settle();
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Closed)));
}
} // namespace
