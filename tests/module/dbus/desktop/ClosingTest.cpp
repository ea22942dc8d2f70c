// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"

namespace {
using testing::IsEmpty;

/// Why notifications close, as another program on the bus learns it.
class ClosingTest : public DesktopTest
{
protected:
    ClosingTest()
        : DesktopTest({{"defaultTimeout"_s, 300}})
    {
    }

    bool isReported(quint32 id, int reason) { return m_monitor->writes(closedSignal(id, reason)); }
    int reports() { return m_monitor->output().count("NotificationClosed"_s); }
    QString output() { return m_monitor->output(); }
    ClientProgram &monitored() { return *m_monitor; }

private:
    std::unique_ptr<ClientProgram> m_monitor = monitor();
};

TEST_F(ClosingTest, IsReportedAsExpiredWhenTheDefaultTimeIsOver)
{
    EXPECT_TRUE(isReported(notifySend({"Title"_s}), 1));
    EXPECT_TRUE(isReported(notifySend({"-t"_s, "-1"_s, "Title"_s}), 1));
}

TEST_F(ClosingTest, IsReportedAsExpiredWhenItsOwnTimeIsOver)
{
    EXPECT_TRUE(isReported(notifySend({"-t"_s, "500"_s, "Title"_s}), 1));
}

TEST_F(ClosingTest, NeverComesByItselfForATimeoutOfZero)
{
    const quint32 id = notifySend({"-t"_s, "0"_s, "Title"_s});
    waitFor([] { return false; }, std::chrono::milliseconds(700));
    EXPECT_TRUE(isOpen(id));
    EXPECT_EQ(reports(), 0);
}

TEST_F(ClosingTest, NeverComesByItselfForWhatIsCritical)
{
    const quint32 id = notifySend({"-u"_s, "critical"_s, "Title"_s});
    waitFor([] { return false; }, std::chrono::milliseconds(700));
    EXPECT_TRUE(isOpen(id));
    EXPECT_TRUE(isReported(
        notifySend({"-u"_s, "critical"_s, "-r"_s, QString::number(id), "-t"_s, "100"_s, "Title"_s}),
        1));
}

TEST_F(ClosingTest, IsReportedAsDismissedWhenAPersonClosesTheNode)
{
    const quint32 id = notifySend({"-t"_s, "60000"_s, "Title"_s});
    CMSubscribe::closeNode(pathOf(id));
    EXPECT_TRUE(isReported(id, 2));
}

TEST_F(ClosingTest, IsReportedAsClosedForACall)
{
    const quint32 id = notifySend({"-t"_s, "60000"_s, "Title"_s});
    EXPECT_EQ(result("CloseNotification"_s, {QString::number(id)}), "()"_s);
    EXPECT_TRUE(isReported(id, 3));
    EXPECT_FALSE(isOpen(id));
    EXPECT_TRUE(waitFor([] { return displayed().isEmpty(); }));
}

TEST_F(ClosingTest, IsReportedAsClosedForTheDisplaysCancelRequest)
{
    const quint32 id = notifySend({"-t"_s, "60000"_s, "Title"_s});
    settle();
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(pathOf(id)),
                     {});
    EXPECT_TRUE(isReported(id, 3));
}

TEST_F(ClosingTest, ComesAfterTheActionThatCausesIt)
{
    ClientProgram program(bus(), "notify-send"_s,
                          {"-t"_s, "0"_s, "-A"_s, "key=Label"_s, "Title"_s});
    ASSERT_TRUE(waitFor([&] { return isOpen(1); }, std::chrono::seconds(20)));
    CMRoot()->invoke(rowOf(1, 1).path(), QVariant("token"_s), {});
    ASSERT_TRUE(isReported(1, 2));
    const int token = output().indexOf("ActivationToken (uint32 1, 'token')"_s);
    const int action = output().indexOf("ActionInvoked (uint32 1, 'key')"_s);
    const int closed = output().indexOf(closedSignal(1, 2));
    EXPECT_GE(token, 0);
    EXPECT_GT(action, token);
    EXPECT_GT(closed, action);
}

TEST_F(ClosingTest, IsReportedOnce)
{
    const quint32 id = notifySend({"-t"_s, "0"_s, "Title"_s});
    CMSubscribe::closeNode(pathOf(id));
    ASSERT_TRUE(isReported(id, 2));
    EXPECT_TRUE(result("CloseNotification"_s, {QString::number(id)})
                    .contains("org.freedesktop.Notifications.InvalidId"_s));
    notifySend({"Last"_s});
    ASSERT_TRUE(isReported(id + 1, 1));
    EXPECT_EQ(reports(), 2);
}

TEST_F(ClosingTest, LeavesNothingInTheModel)
{
    const quint32 id = notifySend({"Title"_s, "Text"_s});
    ASSERT_TRUE(isReported(id, 1));
    EXPECT_THAT(CMCatalog::tree(CMPath("/dbus/notifications"_s)), IsEmpty());
    EXPECT_THAT(CMCatalog::tree(TavoNotificationDisplaySimpleMessageNodePath()), IsEmpty());
}
} // namespace
