// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "OpenNotificationsTest.h"

#include "support/LoadedModule.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;
using Pair = std::pair<quint32, Reason>;
using Priority = TavoNotificationItemPriority;

/// With the real display.
class ShownNotificationsTest : public OpenNotificationsTest
{
protected:
    static DesktopNotification withActions(bool isResident = false)
    {
        DesktopNotification notification = text("text"_s);
        notification.actions = {{"default"_s, "Open"_s}, {"a/b ä"_s, "Other"_s}, {{}, "Empty"_s}};
        notification.isResident = isResident;
        return notification;
    }

private:
    LoadedModule m_display{QStringLiteral(NOTIFICATIONS_MODULE_FILE), "notifications"};
};

TEST_F(ShownNotificationsTest, AreQueuedByTheirPaths)
{
    const quint32 first = open(text("first"_s));
    const quint32 second = open(text("second"_s));
    EXPECT_THAT(displayed(),
                ElementsAre(NotificationNode::pathOf(first), NotificationNode::pathOf(second)));
}

TEST_F(ShownNotificationsTest, AreNodesWithATitleAndARowOfText)
{
    const quint32 id = open(text("some text"_s));
    const auto entries = CMCatalog::tree(NotificationNode::pathOf(id));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].title.toString(), "Title"_s);
    ASSERT_EQ(rowsOf(id).size(), 1);
    EXPECT_EQ(rowOf(id, 0), TavoRoles().setType(TavoRolesType::Text).setTitle("some text"_s));
}

TEST_F(ShownNotificationsTest, SayWhoTheyComeFromAndWhatTheyAreAbout)
{
    DesktopNotification notification = text("text"_s);
    notification.application = "Mail"_s;
    notification.icon = "mail-unread"_s;
    notification.category = "email.arrived"_s;
    notification.desktopEntry = "org.example.Mail"_s;
    notification.isTransient = true;
    const TavoRoles row = rowOf(open(notification), 0);
    EXPECT_EQ(row.application(), "Mail"_s);
    EXPECT_EQ(row.icon(), "mail-unread"_s);
    EXPECT_EQ(row.category(), "email.arrived"_s);
    EXPECT_EQ(row.desktopEntry(), "org.example.Mail"_s);
    EXPECT_TRUE(row.isTransient());
}

TEST_F(ShownNotificationsTest, SayHowTheyLook)
{
    DesktopNotification notification = withActions();
    notification.markup = "<b>text</b>"_s;
    notification.imageSource = "/srv/door.png"_s;
    notification.progress = 0;
    const quint32 id = open(notification);
    const TavoRoles row = rowOf(id, 0);
    EXPECT_EQ(row.title().toString(), "text"_s);
    EXPECT_EQ(row.markup(), "<b>text</b>"_s);
    EXPECT_EQ(row.image(), TavoImage().setSource("/srv/door.png"_s));
    EXPECT_TRUE(row.hasValue());
    EXPECT_EQ(row.value(), 0);
    EXPECT_TRUE(rowOf(id, 1).isDefault());
    EXPECT_FALSE(rowOf(id, 2).isDefault());
    EXPECT_EQ(rowOf(id, 2).icon(), ""_s);
}

TEST_F(ShownNotificationsTest, NameTheIconsOfTheirActionsOnRequest)
{
    DesktopNotification notification = text("text"_s);
    notification.actions = {{"media-playback-start"_s, "Play"_s}};
    notification.hasActionIcons = true;
    const TavoRoles row = rowOf(open(notification), 1);
    EXPECT_EQ(row.icon(), "media-playback-start"_s);
    EXPECT_EQ(row.title().toString(), "Play"_s);
}

TEST_F(ShownNotificationsTest, AreQueuedByTheirPriority)
{
    const quint32 normal = open(text("normal"_s));
    const quint32 low = open(text("low"_s, 0, Priority::Low));
    const quint32 urgent = open(text("urgent"_s, 0, Priority::Urgent));
    EXPECT_THAT(displayed(),
                ElementsAre(NotificationNode::pathOf(urgent), NotificationNode::pathOf(normal),
                            NotificationNode::pathOf(low)));
}

TEST_F(ShownNotificationsTest, ExpireAfterTheirTimeout)
{
    const quint32 first = open(text("first"_s, 300));
    const quint32 second = open(text("second"_s, 300));
    ASSERT_TRUE(ended(second));
    EXPECT_THAT(ends, ElementsAre(Pair(first, Reason::Expired), Pair(second, Reason::Expired)));
}

TEST_F(ShownNotificationsTest, ExpireAfterTheirTimeoutEvenWhenPreempted)
{
    const quint32 first = open(text("first"_s, 3000));
    waitFor([] { return false; }, std::chrono::milliseconds(800));
    const quint32 urgent = open(text("urgent"_s, 300, Priority::Urgent));
    ASSERT_TRUE(ended(first));
    EXPECT_THAT(ends, ElementsAre(Pair(urgent, Reason::Expired), Pair(first, Reason::Expired)));
}

TEST_F(ShownNotificationsTest, AreDismissedWhenTheirNodeIsClosed)
{
    const quint32 first = open(text("first"_s, 100'000));
    const quint32 second = open(text("second"_s));
    EXPECT_TRUE(CMSubscribe::closeNode(NotificationNode::pathOf(second)));
    EXPECT_TRUE(CMSubscribe::closeNode(NotificationNode::pathOf(first)));
    settle();
    EXPECT_THAT(ends, ElementsAre(Pair(second, Reason::Dismissed), Pair(first, Reason::Dismissed)));
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(ShownNotificationsTest, AreClosedByTheDisplaysCancelRequest)
{
    const quint32 first = open(text("first"_s, 100'000));
    const quint32 second = open(text("second"_s, 100'000));
    for (const quint32 id : {second, first}) {
        EXPECT_TRUE(Request(TavoNotificationDisplayCancelNotifyPath(),
                            TavoValue().setPath(NotificationNode::pathOf(id)))
                        .succeeds());
        settle();
    }
    EXPECT_THAT(ends, ElementsAre(Pair(second, Reason::Closed), Pair(first, Reason::Closed)));
}

/// Not as expired, because the display says how it ended.
TEST_F(ShownNotificationsTest, AreClosedByACancelRequestHoweverShortlyBeforeTheirTimeout)
{
    const quint32 id = open(text("text"_s, 400));
    EXPECT_TRUE(Request(TavoNotificationDisplayCancelNotifyPath(),
                        TavoValue().setPath(NotificationNode::pathOf(id)))
                    .succeeds());
    settle();
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Closed)));
}

TEST_F(ShownNotificationsTest, StayOpenWhenAnothersRequestForTheirNodeExpires)
{
    const quint32 id = open(text("text"_s));
    const auto item = TavoNotificationDisplayItem()
                          .setPath(NotificationNode::pathOf(id))
                          .setPriority(Priority::Urgent)
                          .setTimeout(1);
    EXPECT_TRUE(
        Request(TavoNotificationDisplayOpenPath(), TavoValue().setNotificationDisplayItem(item))
            .succeeds());
    ASSERT_TRUE(waitFor([] { return displayed().size() == 1; }));
    settle();
    EXPECT_THAT(ends, IsEmpty());
}

TEST_F(ShownNotificationsTest, AreClosedOnRequestWithTheGivenReason)
{
    const quint32 id = open(text("text"_s));
    EXPECT_TRUE(notifications.close(id, Reason::Closed));
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Closed)));
    EXPECT_FALSE(notifications.close(id, Reason::Closed));
    settle();
    EXPECT_THAT(displayed(), IsEmpty());
    EXPECT_EQ(ends.size(), 1U);
}

TEST_F(ShownNotificationsTest, LeaveNothingBehind)
{
    DesktopNotification notification = withActions();
    notification.timeout = 50;
    const quint32 expired = open(notification);
    const quint32 closed = open(withActions());
    const quint32 dismissed = open(withActions());
    notifications.close(closed, Reason::Closed);
    CMSubscribe::closeNode(NotificationNode::pathOf(dismissed));
    ASSERT_TRUE(ended(expired));
    settle();
    EXPECT_EQ(nodes(), 0U);
    EXPECT_EQ(notifications.count(), 0);
    EXPECT_EQ(CMCatalog::tree(TavoNotificationDisplaySimpleMessageNodePath()).size(), 0U);
    EXPECT_FALSE(CMSubscribe::closeNode(NotificationNode::pathOf(expired)));
}

TEST_F(ShownNotificationsTest, KeepTheirPlaceWhenTheirTextIsChanged)
{
    const quint32 first = open(text("first"_s, 2000));
    const quint32 second = open(text("second"_s));
    DesktopNotification changed = text("changed"_s, 2000);
    changed.title = "New"_s;
    changed.actions = {{"key"_s, "Label"_s}};
    notifications.replace(first, changed);
    settle();
    EXPECT_THAT(displayed(),
                ElementsAre(NotificationNode::pathOf(first), NotificationNode::pathOf(second)));
    EXPECT_EQ(rowOf(first, 0).title().toString(), "changed"_s);
    EXPECT_EQ(rowOf(first, 1).title().toString(), "Label"_s);
    EXPECT_EQ(CMCatalog::tree(NotificationNode::pathOf(first)).at(0).title.toString(), "New"_s);
    EXPECT_THAT(ends, IsEmpty());
    ASSERT_TRUE(ended(first));
    EXPECT_THAT(ends, ElementsAre(Pair(first, Reason::Expired)));
}

TEST_F(ShownNotificationsTest, HaveOnlyTheirNewActionsAfterAChange)
{
    const quint32 id = open(withActions());
    const CMPath old = rowOf(id, 1).path();
    DesktopNotification changed = text("changed"_s);
    changed.actions = {{"new"_s, "New"_s}};
    notifications.replace(id, changed);
    EXPECT_EQ(rowsOf(id).size(), 2);
    EXPECT_FALSE(Request(old, QVariant()).succeeds());
    EXPECT_TRUE(Request(rowOf(id, 1).path(), QVariant()).succeeds());
    EXPECT_THAT(invoked, ElementsAre(QString::number(id) + " new "_s));
    notifications.close(id, Reason::Closed);
    EXPECT_EQ(nodes(), 0U);
}

TEST_F(ShownNotificationsTest, AreQueuedAgainForANewTimeout)
{
    const quint32 first = open(text("first"_s));
    const quint32 second = open(text("second"_s));
    notifications.replace(first, text("first"_s, 60'000));
    settle();
    EXPECT_THAT(displayed(),
                ElementsAre(NotificationNode::pathOf(second), NotificationNode::pathOf(first)));
    EXPECT_THAT(ends, IsEmpty());
}

TEST_F(ShownNotificationsTest, AreQueuedAgainForANewPriority)
{
    const quint32 first = open(text("first"_s));
    const quint32 second = open(text("second"_s));
    notifications.replace(second, text("second"_s, 0, Priority::High));
    settle();
    EXPECT_THAT(displayed(),
                ElementsAre(NotificationNode::pathOf(second), NotificationNode::pathOf(first)));
    EXPECT_THAT(ends, IsEmpty());
    notifications.close(second, Reason::Closed);
    settle();
    EXPECT_THAT(displayed(), ElementsAre(NotificationNode::pathOf(first)));
}

TEST_F(ShownNotificationsTest, ShowTheirLastStateWhenTheyChangeFasterThanTheDisplay)
{
    const quint32 id = notifications.freeId();
    notifications.open(id, text("0"_s));
    for (int i = 1; i <= 100; ++i) {
        notifications.replace(id, text(QString::number(i), i * 1000, Priority::Enum(i % 4)));
    }
    open(text("high"_s, 0, Priority::High));
    notifications.replace(id, text("last"_s, 0, Priority::Urgent));
    settle();
    EXPECT_EQ(displayed().size(), 2);
    EXPECT_EQ(displayed().at(0), NotificationNode::pathOf(id));
    EXPECT_EQ(rowOf(id, 0).title().toString(), "last"_s);
    EXPECT_THAT(ends, IsEmpty());
}

TEST_F(ShownNotificationsTest, MayReuseTheIdOfOneThatWasJustClosed)
{
    const quint32 id = open(text("old"_s));
    notifications.close(id, Reason::Closed);
    notifications.open(id, text("new"_s));
    settle();
    EXPECT_THAT(displayed(), ElementsAre(NotificationNode::pathOf(id)));
    EXPECT_EQ(rowOf(id, 0).title().toString(), "new"_s);
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Closed)));
}

TEST_F(ShownNotificationsTest, AreNotConfusedWithThoseOfOthers)
{
    const auto others = TavoNotificationDisplayItem().setMessage("other"_s);
    const auto openOther = [&](Priority::Enum priority) {
        const auto item = TavoNotificationDisplayItem(others).setPriority(priority);
        const Request request(TavoNotificationDisplayOpenPath(),
                              TavoValue().setNotificationDisplayItem(item));
        EXPECT_TRUE(request.succeeds());
        return TavoValue(request.value().toHash()).path();
    };
    const CMPath urgent = openOther(Priority::Urgent);
    const quint32 id = open(text("ours"_s));
    const CMPath low = openOther(Priority::Low);
    for (const CMPath &path : {low, urgent}) {
        EXPECT_TRUE(CMSubscribe::closeNode(path));
        settle();
    }
    EXPECT_THAT(ends, IsEmpty());
    EXPECT_THAT(displayed(), ElementsAre(NotificationNode::pathOf(id)));
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(),
                     TavoValue().setPath(NotificationNode::pathOf(id)), {});
    settle();
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Closed)));
}

TEST_F(ShownNotificationsTest, HaveARowForEachActionWithThePathThatActivatesIt)
{
    const quint32 id = open(withActions());
    const CMPath actions = NotificationNode::pathOf(id) + "actions"_s;
    ASSERT_EQ(rowsOf(id).size(), 4);
    EXPECT_EQ(rowOf(id, 1).type(), TavoRolesType::Action);
    EXPECT_EQ(rowOf(id, 1).title().toString(), "Open"_s);
    EXPECT_EQ(rowOf(id, 1).path(), actions + "default"_s);
    EXPECT_EQ(rowOf(id, 2).path(), actions + "a%2Fb%20%C3%A4"_s);
    EXPECT_EQ(rowOf(id, 3).path(), actions + "%00"_s);
}

TEST_F(ShownNotificationsTest, ReportTheActivatedActionAndClose)
{
    const quint32 id = open(withActions());
    const Request request(rowOf(id, 2).path(), QVariant());
    EXPECT_TRUE(request.succeeds());
    settle();
    EXPECT_THAT(invoked, ElementsAre(QString::number(id) + " a/b ä "_s));
    EXPECT_THAT(ends, ElementsAre(Pair(id, Reason::Dismissed)));
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(ShownNotificationsTest, ReportAnActionWithoutAKey)
{
    const quint32 id = open(withActions());
    EXPECT_TRUE(Request(rowOf(id, 3).path(), QVariant()).succeeds());
    EXPECT_THAT(invoked, ElementsAre(QString::number(id) + "  "_s));
}

TEST_F(ShownNotificationsTest, PassOnTheTokenOfAnActivation)
{
    const quint32 id = open(withActions(true));
    EXPECT_TRUE(Request(rowOf(id, 1).path(), QVariant("bare"_s)).succeeds());
    EXPECT_TRUE(Request(rowOf(id, 1).path(), TavoValue().setString_("field"_s)).succeeds());
    const QString start = QString::number(id) + " default "_s;
    EXPECT_THAT(invoked, ElementsAre(start + "bare"_s, start + "field"_s));
}

TEST_F(ShownNotificationsTest, PassOnNoTokenThatIsTooLong)
{
    const quint32 id = open(withActions(true));
    EXPECT_TRUE(Request(rowOf(id, 1).path(), QVariant(QString(1000, 'x'))).succeeds());
    EXPECT_TRUE(Request(rowOf(id, 1).path(), QVariant(QString(1001, 'x'))).succeeds());
    const QString start = QString::number(id) + " default "_s;
    EXPECT_THAT(invoked, ElementsAre(start + QString(1000, 'x'), start));
}

TEST_F(ShownNotificationsTest, StayAfterAnActionWhenTheyAreResident)
{
    const quint32 id = open(withActions(true));
    EXPECT_TRUE(Request(rowOf(id, 1).path(), QVariant()).succeeds());
    settle();
    EXPECT_THAT(ends, IsEmpty());
    EXPECT_EQ(displayed().size(), 1);
}

TEST_F(ShownNotificationsTest, RefuseAnActivationThatComesTooLate)
{
    const quint32 id = open(withActions());
    const Request request(rowOf(id, 1).path(), QVariant());
    notifications.close(id, Reason::Closed);
    EXPECT_FALSE(request.succeeds());
    EXPECT_THAT(invoked, IsEmpty());
}

TEST_F(ShownNotificationsTest, HaveOneActionPerKey)
{
    DesktopNotification notification = text("text"_s);
    notification.actions = {{"key"_s, "One"_s}, {"key"_s, "Two"_s}};
    const quint32 id = open(notification);
    EXPECT_EQ(rowsOf(id).size(), 2);
    EXPECT_EQ(rowOf(id, 1).title().toString(), "One"_s);
}

TEST_F(ShownNotificationsTest, GetOnlyFreeIds)
{
    notifications.open(1, text("one"_s));
    notifications.open(3, text("three"_s));
    EXPECT_EQ(notifications.freeId(), 2U);
    EXPECT_EQ(notifications.freeId(), 4U);
}
} // namespace
