// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"
#include "support/EventThread.h"

#include <QEventLoop>
#include <QPointer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using testing::ElementsAre;

namespace {

/// Calls a function when a change is reported.
class Reactor : public QObject
{
public:
    void on_rows_changed(const CMPath & /*path*/, const QStringList & /*changes*/, int /*first*/,
                         int /*count*/)
    {
        ++reports;
        if (reaction) {
            reaction();
        }
    }

    std::function<void()> reaction;
    int reports = 0;
};

template <typename Receiver>
void subscribe(Receiver *receiver, Qt::ConnectionType type = Qt::AutoConnection)
{
    CMRoot()->connectRowsChange(path, receiver, &Receiver::on_rows_changed, type);
}

template <typename Receiver>
void unsubscribe(Receiver *receiver)
{
    CMRoot()->disconnectRowsChange(path, receiver, &Receiver::on_rows_changed);
}

int raiseChange(int first = -1)
{
    return CMSubscribe::raiseRowsChange(path, change, first, 1);
}

class SubscriptionTest : public testing::Test
{
protected:
    ~SubscriptionTest() override { settle(); }

    ChangeRecorder recorder;
    Reactor reactor;
};

using SubscriptionDeathTest = SubscriptionTest;
} // namespace

TEST_F(SubscriptionTest, ReportsAChangeAtItsPath)
{
    subscribe(&recorder);
    EXPECT_EQ(raiseChange(3), 1);
    settle();
    EXPECT_THAT(recorder.rows, ElementsAre(RowsReport{path, change, 3, 1}));
}

TEST_F(SubscriptionTest, ReportsFromTheEventLoopAndNeverInsideTheChange)
{
    subscribe(&recorder, Qt::DirectConnection);
    raiseChange();
    EXPECT_TRUE(recorder.rows.empty());
    settle();
    EXPECT_EQ(recorder.rows.size(), 1U);
}

TEST_F(SubscriptionTest, ReportsEveryChangeInOrder)
{
    subscribe(&recorder);
    for (int i = 0; i < 100; ++i) {
        raiseChange(i);
    }
    settle();
    ASSERT_EQ(recorder.rows.size(), 100U);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(recorder.rows[std::size_t(i)].first, i);
    }
}

TEST_F(SubscriptionTest, DoesNotReportChangesAtOtherPaths)
{
    subscribe(&recorder);
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path + "below", change), 0);
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path.parent(), change), 0);
    settle();
    EXPECT_TRUE(recorder.rows.empty());
}

TEST_F(SubscriptionTest, DoesNotReportEarlierChanges)
{
    raiseChange();
    subscribe(&recorder);
    settle();
    EXPECT_TRUE(recorder.rows.empty());
}

TEST_F(SubscriptionTest, NeedsNoNodeAtItsPath)
{
    subscribe(&recorder);
    CMNodesWorker worker({}, QStringLiteral("Test"));
    CMListRowsNode::create(worker.nodes(), path)->rowsAppend(CMPath(QStringLiteral("/a")));
    settle();
    EXPECT_EQ(recorder.rows.size(), 1U);
}

TEST_F(SubscriptionTest, OutlivesTheNodeAndServesTheNextOne)
{
    CMNodesWorker worker({}, QStringLiteral("Test"));
    CMListRowsNode::create(worker.nodes(), path)->dispose();
    subscribe(&recorder);
    CMListRowsNode::create(worker.nodes(), path)->dispose();
    CMListRowsNode::create(worker.nodes(), path)->rowsAppend(CMPath(QStringLiteral("/a")));
    settle();
    EXPECT_EQ(recorder.rows.size(), 1U);
}

TEST_F(SubscriptionTest, EndsWhenItIsDisconnected)
{
    subscribe(&recorder);
    unsubscribe(&recorder);
    EXPECT_EQ(raiseChange(), 0);
    settle();
    EXPECT_TRUE(recorder.rows.empty());
}

TEST_F(SubscriptionTest, DoesNotReportPendingChangesAfterItHasEnded)
{
    subscribe(&recorder);
    raiseChange();
    unsubscribe(&recorder);
    settle();
    EXPECT_TRUE(recorder.rows.empty());
}

TEST_F(SubscriptionTest, EndsWithItsReceiver)
{
    auto gone = std::make_unique<ChangeRecorder>();
    subscribe(gone.get());
    raiseChange();
    gone.reset();
    EXPECT_EQ(raiseChange(), 0);
    settle();
}

TEST_F(SubscriptionTest, ReportsTwiceWhenMadeTwice)
{
    subscribe(&recorder);
    subscribe(&recorder);
    EXPECT_EQ(raiseChange(), 2);
    settle();
    EXPECT_EQ(recorder.rows.size(), 2U);
}

TEST_F(SubscriptionTest, EndsOnceForEachDisconnectWhenMadeTwice)
{
    subscribe(&recorder);
    subscribe(&recorder);
    unsubscribe(&recorder);
    EXPECT_EQ(raiseChange(), 1);
    settle();
    EXPECT_EQ(recorder.rows.size(), 1U);
    unsubscribe(&recorder);
    EXPECT_EQ(raiseChange(), 0);
}

TEST_F(SubscriptionTest, DoesNotEndThoseOfOtherReceivers)
{
    ChangeRecorder other;
    subscribe(&other);
    subscribe(&recorder);
    unsubscribe(&recorder);
    raiseChange();
    settle();
    EXPECT_EQ(other.rows.size(), 1U);
    EXPECT_TRUE(recorder.rows.empty());
}

TEST_F(SubscriptionTest, DoesNotEndThoseOfAnotherSlotOfTheReceiver)
{
    class Two : public ChangeRecorder
    {
    public:
        void on_second_changed(const CMPath & /*path*/, const QStringList & /*changes*/,
                               int /*first*/, int /*count*/)
        {
            ++second;
        }
        int second = 0;
    };
    Two receiver;
    CMRoot()->connectRowsChange(path, &receiver, &Two::on_second_changed);
    CMRoot()->connectRowsChange<ChangeRecorder>(path, &receiver, &ChangeRecorder::on_rows_changed);
    CMRoot()->disconnectRowsChange<ChangeRecorder>(path, &receiver,
                                                   &ChangeRecorder::on_rows_changed);
    raiseChange();
    settle();
    EXPECT_EQ(receiver.second, 1);
    EXPECT_TRUE(receiver.rows.empty());
}

TEST_F(SubscriptionTest, MayEndWithinItsReport)
{
    subscribe(&reactor);
    reactor.reaction = [this] { unsubscribe(&reactor); };
    raiseChange();
    raiseChange();
    settle();
    EXPECT_EQ(reactor.reports, 1);
}

TEST_F(SubscriptionTest, MayEndWithinAReportThatAnotherReportInterrupted)
{
    subscribe(&reactor);
    reactor.reaction = [this] {
        if (reactor.reports == 1) {
            raiseChange();
            QEventLoop().processEvents();
            unsubscribe(&reactor);
        }
    };
    raiseChange();
    settle();
    EXPECT_EQ(reactor.reports, 2);
    EXPECT_EQ(raiseChange(), 0);
}

TEST_F(SubscriptionTest, MayBeEndedByAnotherThreadWhileItsReportRunsAnEventLoop)
{
    EventThread other;
    subscribe(&reactor);
    reactor.reaction = [this, &other] {
        other.run([this] { unsubscribe(&reactor); });
        // Would free the notifier if it were not emitting.
        QEventLoop().processEvents();
    };
    raiseChange();
    settle();
    EXPECT_EQ(reactor.reports, 1);
    EXPECT_EQ(raiseChange(), 0);
}

TEST_F(SubscriptionTest, MayBeginWithinAReport)
{
    subscribe(&reactor);
    reactor.reaction = [this] { subscribe(&recorder); };
    raiseChange();
    settle();
    EXPECT_TRUE(recorder.rows.empty());
    reactor.reaction = nullptr;
    raiseChange();
    settle();
    EXPECT_EQ(recorder.rows.size(), 1U);
}

TEST_F(SubscriptionTest, MayLoseItsReceiverDuringItsReport)
{
    auto *doomed = new Reactor;
    const QPointer<Reactor> alive = doomed;
    subscribe(doomed);
    doomed->reaction = [doomed] { delete doomed; };
    raiseChange();
    raiseChange();
    settle();
    EXPECT_TRUE(alive.isNull());
}

TEST_F(SubscriptionTest, MayEndAnotherWithinItsReport)
{
    subscribe(&reactor);
    subscribe(&recorder);
    reactor.reaction = [this] { unsubscribe(&recorder); };
    raiseChange();
    settle();
    EXPECT_TRUE(recorder.rows.empty());
}

TEST_F(SubscriptionTest, ReportsThatAClientClosesANode)
{
    subscribe(&recorder);
    EXPECT_TRUE(CMSubscribe::closeNode(path));
    settle();
    EXPECT_THAT(recorder.rows,
                ElementsAre(RowsReport{path, {CMSubscribe::RowsChangeClose()}, -1, 0}));
}

TEST_F(SubscriptionTest, MakesACloseReturnTrue)
{
    EXPECT_FALSE(CMSubscribe::closeNode(path));
    subscribe(&recorder);
    EXPECT_TRUE(CMSubscribe::closeNode(path));
    unsubscribe(&recorder);
    EXPECT_FALSE(CMSubscribe::closeNode(path));
}

TEST_F(SubscriptionTest, IsNotMadeWhenTheCallableConnectsNothing)
{
    int asked = 0;
    CMRoot()->connectChange(CMAbstractWorker::RowsChange, path, &recorder,
                            [&asked](ChangeNotifier * /*notifier*/) { return ++asked == 0; });
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(raiseChange(), 0);
}

TEST_F(SubscriptionTest, HasANotifierOfItsKindThatKnowsItsPath)
{
    const auto check = [this](CMAbstractWorker::ChangeType type, const char *className) {
        CMRoot()->connectChange(type, path, &recorder, [=](ChangeNotifier *notifier) {
            EXPECT_TRUE(notifier->inherits(className));
            EXPECT_EQ(notifier->path(), path);
            EXPECT_EQ(notifier->receiver(), &recorder);
            return false;
        });
    };
    check(CMAbstractWorker::RowsChange, "RowsChangeNotifier");
    check(CMAbstractWorker::ValueChange, "ValueChangeNotifier");
    check(CMAbstractWorker::NodeChange, "NodeChangeNotifier");
    EXPECT_EQ(int(CMAbstractWorker::RowsChange), 2);
}

TEST_F(SubscriptionTest, OfEveryKindEndsWhenItIsDisconnected)
{
    CMNodesWorker worker({}, QStringLiteral("Test"));
    CMRoot()->connectValueChange(path, &recorder, &ChangeRecorder::on_value_changed);
    CMRoot()->connectNodeChange(path, &recorder, &ChangeRecorder::on_node_changed);
    CMRoot()->disconnectValueChange(path, &recorder, &ChangeRecorder::on_value_changed);
    CMRoot()->disconnectNodeChange(path, &recorder, &ChangeRecorder::on_node_changed);
    CMValueNode::create(worker.nodes(), path)->setValue(TavoValue().setInt_(1));
    settle();
    EXPECT_TRUE(recorder.values.empty());
    EXPECT_TRUE(recorder.nodes.empty());
}

TEST_F(SubscriptionTest, IsNotConfusedWithAnEarlierReceiverAtTheSameAddress)
{
    alignas(ChangeRecorder) unsigned char place[sizeof(ChangeRecorder)];
    auto *first = new (place) ChangeRecorder;
    subscribe(first);
    first->~ChangeRecorder();
    auto *second = new (place) ChangeRecorder;
    subscribe(second);
    EXPECT_EQ(raiseChange(), 1);
    unsubscribe(second);
    EXPECT_EQ(raiseChange(), 0);
    second->~ChangeRecorder();
}

TEST_F(SubscriptionDeathTest, RefusesToEndOneThatWasNeverMade)
{
    EXPECT_DEATH(unsubscribe(&recorder), "disconnectSucceeded");
}

TEST_F(SubscriptionDeathTest, RefusesToEndOneTwice)
{
    subscribe(&recorder);
    unsubscribe(&recorder);
    EXPECT_DEATH(unsubscribe(&recorder), "disconnectSucceeded");
}

TEST_F(SubscriptionDeathTest, RefusesToEndOneOfAnotherReceiver)
{
    subscribe(&recorder);
    EXPECT_DEATH(unsubscribe(&reactor), "disconnectSucceeded");
}
