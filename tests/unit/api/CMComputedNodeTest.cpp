// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"
#include "support/EventThread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>

using testing::ElementsAre;

namespace {
const CMPath nodePath(QStringLiteral("/test/computed"));

/// Its value is a number, and it counts how often that is made.
class NumberNode : public CMComputedNode
{
public:
    explicit NumberNode(CMNodes *nodes)
        : CMComputedNode(nodes, nodePath)
    {
        publish();
    }

    void setNumber(int number)
    {
        change([this, number] { m_number = number; });
    }

    mutable int made = 0;

private:
    TavoValue makeValue() const override
    {
        ++made;
        return TavoValue().setInt_(m_number);
    }

    int m_number = 0;
};

class CMComputedNodeTest : public testing::Test
{
protected:
    void subscribe()
    {
        CMRoot()->connectValueChange(nodePath, &recorder, &ChangeRecorder::on_value_changed);
    }

    CMNodesWorker worker{{}, QStringLiteral("Test")};
    NumberNode *node = new NumberNode(worker.nodes());
    ChangeRecorder recorder;
};
} // namespace

TEST_F(CMComputedNodeTest, IsAValueInListings)
{
    EXPECT_EQ(node->kind(), QStringLiteral("value"));
}

TEST_F(CMComputedNodeTest, MakesItsValueOnlyWhenItIsRead)
{
    node->setNumber(1);
    node->setNumber(2);
    EXPECT_EQ(node->made, 0);
    EXPECT_EQ(CMRoot()->getValue(nodePath), carried(2));
    EXPECT_EQ(node->made, 1);
}

TEST_F(CMComputedNodeTest, ReportsEveryChangeInOrderFromTheEventLoop)
{
    subscribe();
    for (int i = 1; i <= 3; ++i) {
        node->setNumber(i);
    }
    EXPECT_TRUE(recorder.values.empty());
    settle();
    EXPECT_THAT(recorder.values,
                ElementsAre(std::pair(nodePath, carried(1)), std::pair(nodePath, carried(2)),
                            std::pair(nodePath, carried(3))));
}

TEST_F(CMComputedNodeTest, MakesItsValueOnceForAllSubscribers)
{
    subscribe();
    ChangeRecorder other;
    CMRoot()->connectValueChange(nodePath, &other, &ChangeRecorder::on_value_changed);
    node->setNumber(1);
    settle();
    EXPECT_THAT(other.values, ElementsAre(std::pair(nodePath, carried(1))));
    EXPECT_EQ(recorder.values, other.values);
    EXPECT_EQ(node->made, 1);
}

TEST_F(CMComputedNodeTest, IsReadWhileTheEventLoopOfItsWorkerIsBlocked)
{
    node->dispose();
    EventThread thread;
    std::unique_ptr<CMNodesWorker> busy;
    std::promise<void> standing;
    std::promise<void> goOn;
    auto working = thread.start([&] {
        busy = std::make_unique<CMNodesWorker>(QVariantHash(), QStringLiteral("Busy"));
        (new NumberNode(busy->nodes()))->setNumber(7);
        standing.set_value();
        goOn.get_future().wait();
        busy.reset();
    });
    standing.get_future().wait();
    EXPECT_EQ(CMRoot()->getValue(nodePath), carried(7));
    goOn.set_value();
    working.get();
}
