// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/CollidingTexts.h"
#include "support/EventLoop.h"
#include "support/TimeOf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

// Most of these tests need no clock: with quadratic work they would exceed the time limit of a test.

namespace {
constexpr int many = 100000;
const CMPath base(QStringLiteral("/test/scale"));

std::vector<CMPath> manyPaths()
{
    std::vector<CMPath> paths;
    paths.reserve(many);
    for (int i = 0; i < many; ++i) {
        paths.push_back(base + QString::number(i));
    }
    return paths;
}

const std::vector<CMPath> &paths()
{
    static const std::vector<CMPath> made = manyPaths();
    return made;
}
} // namespace

TEST(ScaleTest, AHundredThousandNodesAreMadeFoundAndFreedWithTheirWorker)
{
    auto worker = std::make_unique<CMNodesWorker>(QVariantHash(), QStringLiteral("Test"));
    for (const CMPath &path : paths()) {
        CMListRowsNode::create(worker->nodes(), path)->rowsAppend(path);
    }
    EXPECT_EQ(worker->nodes()->size(), many);
    EXPECT_TRUE(CMRoot()->invoke(paths().back(), QVariant(), {}).isFinished());
    worker.reset();
    EXPECT_EQ(CMRoot()->invoke(paths().front(), QVariant(), {}).error().name(),
              CMErrors::noSuchNode());
}

TEST(ScaleTest, AHundredThousandNodesAreDisposedOfOneByOneFromBothEnds)
{
    CMNodesWorker worker({}, QStringLiteral("Test"));
    std::vector<CMNode *> nodes;
    for (const CMPath &path : paths()) {
        nodes.push_back(CMActivateNode::create(worker.nodes(), path));
    }
    for (std::size_t i = 0; i < many / 2; ++i) {
        nodes[i]->dispose();
        nodes[many - 1 - i]->dispose();
    }
    EXPECT_EQ(worker.nodes()->size(), 0);
}

TEST(ScaleTest, OneReceiverHasAHundredThousandSubscriptionsAndEndsThem)
{
    ChangeRecorder receiver;
    for (const CMPath &path : paths()) {
        CMRoot()->connectRowsChange(path, &receiver, &ChangeRecorder::on_rows_changed);
    }
    for (const CMPath &path : paths()) {
        ASSERT_TRUE(CMSubscribe::closeNode(path));
    }
    settle();
    EXPECT_EQ(receiver.rows.size(), std::size_t(many));
    for (const CMPath &path : paths()) {
        CMRoot()->disconnectRowsChange(path, &receiver, &ChangeRecorder::on_rows_changed);
    }
    EXPECT_FALSE(CMSubscribe::closeNode(paths().front()));
}

TEST(ScaleTest, AHundredThousandSubscriptionsToOnePathAreMadeAndEnded)
{
    ChangeRecorder receiver;
    for (int i = 0; i < many; ++i) {
        CMRoot()->connectRowsChange(base, &receiver, &ChangeRecorder::on_rows_changed);
    }
    EXPECT_EQ(CMSubscribe::raiseRowsChange(base, {}), many);
    settle();
    EXPECT_EQ(receiver.rows.size(), std::size_t(many));
    for (int i = 0; i < many; ++i) {
        CMRoot()->disconnectRowsChange(base, &receiver, &ChangeRecorder::on_rows_changed);
    }
    EXPECT_EQ(CMSubscribe::raiseRowsChange(base, {}), 0);
}

TEST(ScaleTest, AHundredThousandSubscriptionsEndWithTheirReceiver)
{
    auto receiver = std::make_unique<ChangeRecorder>();
    for (const CMPath &path : paths()) {
        CMRoot()->connectRowsChange(path, receiver.get(), &ChangeRecorder::on_rows_changed);
    }
    receiver.reset();
    EXPECT_FALSE(CMSubscribe::closeNode(paths().front()));
    EXPECT_FALSE(CMSubscribe::closeNode(paths().back()));
}

TEST(ScaleTest, ReceiversLeaveNoSubscriptionsBehind)
{
    for (const CMPath &path : paths()) {
        ChangeRecorder shortLived;
        CMRoot()->connectRowsChange(path, &shortLived, &ChangeRecorder::on_rows_changed);
    }
    settle();
    EXPECT_EQ(CMSubscribe::raiseRowsChange(paths().back(), {}), 0);
}

TEST(ScaleTest, TenThousandReceiversWatchOnePath)
{
    std::vector<std::unique_ptr<ChangeRecorder>> receivers;
    for (int i = 0; i < many / 10; ++i) {
        receivers.push_back(std::make_unique<ChangeRecorder>());
        CMRoot()->connectRowsChange(base, receivers.back().get(), &ChangeRecorder::on_rows_changed);
    }
    EXPECT_EQ(CMSubscribe::raiseRowsChange(base, {}), many / 10);
    settle();
    for (const auto &receiver : receivers) {
        ASSERT_EQ(receiver->rows.size(), 1U);
        CMRoot()->disconnectRowsChange(base, receiver.get(), &ChangeRecorder::on_rows_changed);
    }
}

TEST(ScaleTest, AHundredThousandRequestsWaitForTheirTurn)
{
    CMNodesWorker worker({}, QStringLiteral("Test"));
    Echo echo;
    CMActivateNode::create(worker.nodes(), base)
        ->setInvoke(&echo, &Echo::on_node_activated, Qt::QueuedConnection);
    std::vector<CMReply<QVariant>> replies;
    replies.reserve(many);
    for (int i = 0; i < many; ++i) {
        replies.push_back(CMRoot()->invoke(base, QVariant(i), {}));
    }
    settle();
    EXPECT_EQ(echo.calls, many);
    EXPECT_EQ(replies.back().value(), QVariant(many - 1));
}

namespace {
/// The time that publishing, finding and subscribing to nodes with these names take.
qint64 timeOfNodes(const std::vector<QString> &names)
{
    return processorTimeOf([&names] {
        CMNodesWorker worker({}, QStringLiteral("Test"));
        ChangeRecorder receiver;
        for (const QString &name : names) {
            const CMPath path = base + name;
            CMValueNode::create(worker.nodes(), path);
            CMRoot()->getValue(path);
            CMRoot()->connectValueChange(path, &receiver, &ChangeRecorder::on_value_changed);
        }
        for (const QString &name : names) {
            CMRoot()->disconnectValueChange(base + name, &receiver,
                                            &ChangeRecorder::on_value_changed);
        }
    });
}
} // namespace

TEST(ScaleTest, ListingAPathTakesNoLongerWhenThereAreManyOtherNodes)
{
    CMNodesWorker worker({}, QStringLiteral("Test"));
    const CMPath few(QStringLiteral("/test/few"));
    CMValueNode::create(worker.nodes(), few + QStringLiteral("node"));
    CMValueNode::create(worker.nodes(), few + QStringLiteral("group/node"));
    const auto list = [&few] {
        for (int i = 0; i < 100; ++i) {
            ASSERT_EQ(CMCatalog::children(few).size(), 2U);
            ASSERT_EQ(CMCatalog::tree(few).size(), 2U);
        }
    };
    const qint64 before = processorTimeOf(list);
    for (const CMPath &path : paths()) {
        CMValueNode::create(worker.nodes(), path);
    }
    EXPECT_LT(processorTimeOf(list), 10 * before);
}

TEST(ScaleTest, NodesThatAnAttackerHasNamedTakeNoLongerThanOthers)
{
    constexpr int bits = 13;
    for (const std::vector<QString> &texts : {textsOfOneHash(bits), textsOfOneSeededHash(bits)}) {
        std::vector<QString> others = texts;
        std::mt19937 random(1);
        for (QString &text : others) {
            for (QChar &character : text) {
                character = QChar(ushort('a' + random() % 26));
            }
        }
        EXPECT_LT(timeOfNodes(texts), 5 * timeOfNodes(others));
    }
}
