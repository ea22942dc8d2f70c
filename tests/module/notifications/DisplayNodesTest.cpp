// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// How open notifications appear in the model, and how clients close them there.

#include "DisplayTest.h"
#include "support/clock/VirtualClock.h"

#include <QThread>

#include <atomic>
#include <chrono>

namespace {
using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;
using namespace std::chrono_literals;
using DisplayNodesTest = DisplayTest;
} // namespace

TEST_F(DisplayNodesTest, PublishTheEmptyQueueFromTheStart)
{
    EXPECT_TRUE(exists(TavoNotificationDisplayQueuePath()));
    EXPECT_TRUE(rows().isEmpty());
}

TEST_F(DisplayNodesTest, GiveAMessageANodeWithItsTextAsTheOnlyRow)
{
    const CMPath path = open("hello"_s);
    EXPECT_EQ(path.parent(), TavoNotificationDisplaySimpleMessageNodePath());
    EXPECT_EQ(path.name().size(), 36);
    EXPECT_EQ(int(rowOf(path).type()), 6);
    EXPECT_EQ(rowOf(path).title(), TrString("hello"));
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "Node created with id " + path.name().toStdString()), 1);
}

TEST_F(DisplayNodesTest, HaveTheSameRowWhenThereIsATitle)
{
    const TavoRoles row = rowOf(open(message("hello"_s).setTitle("title")));
    EXPECT_EQ(int(row.type()), 6);
    EXPECT_EQ(row.title(), TrString("hello"));
}

TEST_F(DisplayNodesTest, KeepAMessageTranslatable)
{
    const TrString text(TrCharData{"Door", "Door open", nullptr, -1}, {});
    EXPECT_EQ(rowOf(open(TavoNotificationDisplayItem().setMessage(text))).title(), text);
}

TEST_F(DisplayNodesTest, GiveEqualMessagesDifferentNodes)
{
    EXPECT_NE(open("hello"_s), open("hello"_s));
}

TEST_F(DisplayNodesTest, GiveAReferenceNoNode)
{
    open(reference(CMPath("/client/node"_s)));
    EXPECT_EQ(rows(), QVector<CMPath>{CMPath("/client/node"_s)});
    EXPECT_FALSE(exists(CMPath("/client/node"_s)));
}

TEST_F(DisplayNodesTest, StayWhenTheNotificationHasAnotherIdOrNone)
{
    const CMPath a = open(message("a"_s).setId("mine"_s));
    const CMPath b = open("b"_s);
    cancelDisplay(a);
    cancelDisplay(b);
    EXPECT_TRUE(exists(a));
    EXPECT_TRUE(exists(b));
}

TEST_F(DisplayNodesTest, AreDisposedOfWithANotificationWhoseIdIsTheirName)
{
    // A second notification carries the first one's identifier as its own id.
    const CMPath first = open("a"_s);
    const CMPath second = open(message("b"_s).setId(first.name()));
    const CMPath third = open(message("c"_s).setId(first.name()));
    cancelDisplay(second);
    EXPECT_FALSE(exists(first));
    EXPECT_TRUE(exists(second));
    cancelDisplay(third); // the node does not exist any more
    EXPECT_TRUE(exists(third));
    EXPECT_EQ(rows(), QVector<CMPath>{first});
}

TEST_F(DisplayNodesTest, KeepTheHeadAndItsTimerWhenAnotherIsCancelled)
{
    VirtualClock clock;
    const CMPath a = open("a"_s, 1, 60000);
    const CMPath b = open("b"_s);
    const CMPath c = open("c"_s);
    const CMPath d = open("d"_s);
    clock.advance(20ms);
    EXPECT_FALSE(cancelDisplay(b).error().isError());
    close(c);
    EXPECT_EQ(rows(), (QVector<CMPath>{a, d}));
    clock.pass(59979ms);
    EXPECT_EQ(rows(), (QVector<CMPath>{a, d}));
    clock.pass(1ms);
    EXPECT_EQ(rows(), QVector<CMPath>{d});
}

TEST_F(DisplayNodesTest, KeepTheShownTimeOfTheHeadWhenAnotherIsCancelled)
{
    VirtualClock clock;
    open("a"_s, 1, 60000);
    const CMPath b = open("b"_s);
    clock.advance(20ms);
    cancelDisplay(b);
    open("urgent"_s, 2, 1000);
    fireCloseTimer();
    EXPECT_EQ(closeTimer()->interval(), 59980);
}

TEST_F(DisplayNodesTest, ShowTheNextAtOnceWhenTheHeadIsCancelled)
{
    const CMPath a = open("a"_s, 1, 1000);
    const CMPath b = open("b"_s, 1, 2000);
    cancelDisplay(a);
    EXPECT_EQ(rows(), QVector<CMPath>{b});
    EXPECT_EQ(closeTimer()->interval(), 2000);
    cancelDisplay(b);
    EXPECT_FALSE(closeTimer()->isActive());
}

TEST_F(DisplayNodesTest, StopTheTimerWhenAnUntimedOneBecomesTheHead)
{
    const CMPath a = open("a"_s, 1, 1000);
    open("b"_s, 1, 0);
    cancelDisplay(a);
    EXPECT_FALSE(closeTimer()->isActive());
}

TEST_F(DisplayNodesTest, AreAllRemovedWhenTheirPathIsQueuedTwice)
{
    const CMPath path("/client/node"_s);
    open(reference(path, 1, 1000));
    const CMPath other = open("other"_s, 1, 2000);
    open(reference(path, 0));
    EXPECT_FALSE(cancelDisplay(path).error().isError());
    EXPECT_EQ(rows(), QVector<CMPath>{other});
    EXPECT_EQ(closeTimer()->interval(), 2000);
    EXPECT_TRUE(cancelDisplay(path).error().isError());
}

TEST_F(DisplayNodesTest, AreAllRemovedFromAnyPositionAndTheOthersKeepTheirOrder)
{
    const CMPath path("/client/again"_s);
    QVector<CMPath> others;
    for (const int priority : {3, 2, 1, 0}) {
        open(reference(path, priority));
        others.append(open(reference(CMPath("/client/other%1"_s.arg(priority)), priority)));
        open(reference(path, priority));
    }
    open(reference(path, 4));
    EXPECT_TRUE(cancelDisplay(path).value().toBool());
    EXPECT_EQ(rows(), others);
    EXPECT_EQ(errorOf(cancelDisplay(path)), "Node already closed or non-existent"_s);
}

TEST_F(DisplayNodesTest, AreAllRemovedByOneCloseOfAPathQueuedTwice)
{
    const CMPath path("/client/node"_s);
    open(reference(path));
    open(reference(path));
    close(path);
    EXPECT_TRUE(rows().isEmpty());
}

TEST_F(DisplayNodesTest, LogACancelWhileNothingIsOpen)
{
    cancelDisplay(CMPath("/nowhere"_s));
    EXPECT_EQ(logged(WARN_LOG_LEVEL, "Called cancel display notification but queue is empty"), 1);
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "cancel", "/nowhere"), 1);
}

TEST_F(DisplayNodesTest, LogNothingForACancelOfAnUnknownPath)
{
    open("a"_s);
    log().clear();
    cancelDisplay(CMPath("/nowhere"_s));
    EXPECT_THAT(log().messages(),
                testing::ElementsAre(
                    "Enter void NotificationsWorker::on_notificationDisplayCancel_activated(const "
                    "CMSetDataRequest&): {path: \"/nowhere\"}",
                    "Enter bool NotificationDisplay::cancel(const CMPath&): /nowhere",
                    "Leave bool NotificationDisplay::cancel(const CMPath&): "));
    EXPECT_EQ(log().countAt(TRACE_LOG_LEVEL), 3);
}

TEST_F(DisplayNodesTest, CloseANotificationForAClient)
{
    const CMPath path = open("a"_s);
    close(path);
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "on_subscribe_rowsChanged",
                      "Path: " + path.toString().toStdString() + ", changes: (close)"),
              1);
    EXPECT_EQ(logged(DEBUG_LOG_LEVEL, "RowsChangeClose for " + path.toString().toStdString() +
                                          " removing notification"),
              1);
}

TEST_F(DisplayNodesTest, LogAClientsCloseBeforeTheCancel)
{
    const CMPath path("/client/node"_s);
    open(reference(path));
    beginStory();
    close(path);
    EXPECT_THAT(story(),
                testing::ElementsAre(
                    "TRACE Enter on_subscribe_rowsChanged: Path: /client/node, changes: (close)",
                    "DEBUG RowsChangeClose for /client/node removing notification",
                    "TRACE Enter cancel: /client/node",
                    "TRACE Enter removeNotificationItem: queue size: 1 notifs: 1 index 0",
                    "TRACE Leave removeNotificationItem: queue: 0",
                    "TRACE Enter startTimer: ", "TRACE Leave startTimer: ", "TRACE Leave cancel: ",
                    "TRACE Leave on_subscribe_rowsChanged: "));
}

TEST_F(DisplayNodesTest, FindTheCloseAmongOtherChanges)
{
    const CMPath path = open("a"_s);
    CMSubscribe::raiseRowsChange(path, {"inserted"_s, CMSubscribe::RowsChangeClose()}, 0, 1);
    settle();
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "on_subscribe_rowsChanged",
                      "Path: " + path.toString().toStdString() + ", changes: (inserted, close)"),
              1);
}

TEST_F(DisplayNodesTest, StayOpenOnOtherChanges)
{
    const CMPath path = open("a"_s);
    CMSubscribe::raiseRowsChange(path, {"inserted"_s, "Close"_s, "closed"_s}, 0, 1);
    settle();
    EXPECT_EQ(rows(), QVector<CMPath>{path});
}

TEST_F(DisplayNodesTest, IgnoreASecondClose)
{
    const CMPath path = open("a"_s);
    close(path);
    log().clear();
    EXPECT_FALSE(CMSubscribe::closeNode(path));
    settle();
    EXPECT_TRUE(log().records().empty());
}

TEST_F(DisplayNodesTest, HaveNoSubscriberLeftHoweverTheirNotificationWasClosed)
{
    VirtualClock clock;
    const CMPath expired = open("expired"_s, 1, 1000);
    fireCloseTimer();
    const CMPath cancelled = open("cancelled"_s);
    cancelDisplay(cancelled);
    const CMPath closed = open("closed"_s);
    close(closed);
    const CMPath overdue = open("overdue"_s, 1, 2);
    clock.advance(5ms);
    const CMPath open2 = open("urgent"_s, 2);
    for (const CMPath &path : {expired, cancelled, closed, overdue}) {
        EXPECT_FALSE(CMSubscribe::closeNode(path)) << path;
    }
    EXPECT_TRUE(CMSubscribe::closeNode(open2));
}

TEST_F(DisplayNodesTest, AreRemovedOnceWhenACloseMeetsACancel)
{
    const CMPath path = open("a"_s);
    const CMPath other = open("b"_s);
    log().clear();
    const CMReply<QVariant> reply;
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path), reply);
    CMSubscribe::closeNode(path); // still pending when the cancel ends the subscription
    settle();
    EXPECT_FALSE(reply.error().isError());
    EXPECT_EQ(rows(), QVector<CMPath>{other});
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "cancel", path.toString().toStdString()), 1);
}

TEST_F(DisplayNodesTest, TakeClosesFromOtherThreadsWhileTheWorkerIsDeleted)
{
    QVector<CMPath> paths;
    for (int i = 0; i < 50; ++i) {
        paths.append(open(QString::number(i)));
    }
    std::atomic<bool> stop{false};
    const std::unique_ptr<QThread> closer(QThread::create([&] {
        while (!stop) {
            for (const CMPath &path : qAsConst(paths)) {
                CMSubscribe::closeNode(path);
            }
        }
    }));
    closer->start();
    unload();
    stop = true;
    closer->wait();
    EXPECT_FALSE(exists(TavoNotificationDisplayQueuePath()));
}

TEST_F(DisplayNodesTest, AreAllRemovedWhenTenThousandAreClosedFromTheOldest)
{
    log().setLevel(log4cplus::FATAL_LOG_LEVEL);
    QVector<CMPath> paths;
    for (int i = 0; i < 10000; ++i) {
        paths.append(open("text"_s));
    }
    for (const CMPath &path : qAsConst(paths)) {
        close(path);
    }
    EXPECT_TRUE(rows().isEmpty());
}

TEST_F(DisplayNodesTest, TakeACloseOfTheClientsOwnNodeFromAnotherThread)
{
    const CMPath path("/client/node"_s);
    open(reference(path));
    const std::unique_ptr<QThread> client(QThread::create([path] {
        CMNodesWorker own({}, "Client"_s);
        CMListRowsNode::create(own.nodes(), path);
        CMSubscribe::closeNode(path);
    }));
    client->start();
    EXPECT_TRUE(waitFor([] { return rows().isEmpty(); }));
    client->wait();
}

TEST_F(DisplayNodesTest, StayInTheQueueWhenTheClientDisposesOfItsNode)
{
    const CMPath path("/client/node"_s);
    {
        CMNodesWorker client({}, "Client"_s);
        CMListRowsNode::create(client.nodes(), path);
        open(reference(path));
    }
    settle();
    EXPECT_EQ(rows(), QVector<CMPath>{path});
    EXPECT_FALSE(cancelDisplay(path).error().isError());
}

TEST_F(DisplayNodesTest, ReportRowsOfTheQueueToSubscribers)
{
    class Subscriber : public QObject
    {
    public:
        void on_rowsChanged(const CMPath &, const QStringList &changes, int first, int count)
        {
            seen.append("%1 %2 %3"_s.arg(changes.join(','), QString::number(first),
                                         QString::number(count)));
        }
        QStringList seen;
    };
    Subscriber subscriber;
    CMRoot()->connectRowsChange(TavoNotificationDisplayQueuePath(), &subscriber,
                                &Subscriber::on_rowsChanged);
    open("a"_s);
    const CMPath b = open("b"_s);
    cancelDisplay(b);
    EXPECT_EQ(subscriber.seen, (QStringList{"inserted 0 1"_s, "inserted 1 1"_s, "removed 1 1"_s}));
}

TEST_F(DisplayNodesTest, LeaveTheModelWithTheWorker)
{
    const CMPath path = open("a"_s, 1, 1000);
    unload();
    EXPECT_FALSE(exists(path));
    EXPECT_FALSE(exists(TavoNotificationDisplayQueuePath()));
    close(path);
}
