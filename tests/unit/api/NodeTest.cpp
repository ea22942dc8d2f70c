// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using Reply = CMReply<QVariant>;

namespace {
class NodeTest : public testing::Test
{
protected:
    CMNodesWorker worker{{}, QStringLiteral("Test")};
    CMNodes *nodes = worker.nodes();
};
} // namespace

TEST_F(NodeTest, HasItsPathAndItsSet)
{
    const CMNode *node = CMValueNode::create(nodes, path);
    EXPECT_EQ(node->path(), path);
    EXPECT_EQ(node->nodes(), nodes);
    EXPECT_EQ(nodes->size(), 1);
}

TEST_F(NodeTest, HasATitle)
{
    CMUINode *node = CMListRowsNode::create(nodes, path);
    EXPECT_TRUE(node->title().isEmpty());
    const TrString title(TrCharData{"Test", "title", nullptr, -1}, {});
    node->setTitle(title);
    EXPECT_EQ(node->title(), title);
}

TEST_F(NodeTest, IsListedInItsSetNewestFirst)
{
    CMValueNode::create(nodes, path + "a");
    CMValueNode::create(nodes, path + "b")->dispose();
    CMValueNode::create(nodes, path + "c");
    QStringList names;
    nodes->forEach([&names](const CMEndpoint *node) { names.append(node->path().name()); });
    EXPECT_EQ(names, (QStringList{"c", "a"}));
}

TEST_F(NodeTest, LeavesTheModelWhenDisposedOf)
{
    CMValueNode *node = CMValueNode::create(nodes, path);
    node->setValue(TavoValue().setInt_(1));
    node->dispose();
    EXPECT_EQ(nodes->size(), 0);
    EXPECT_FALSE(CMRoot()->getValue(path).isValid());
    EXPECT_EQ(CMRoot()->invoke(path, QVariant(), Reply()).error().name(), CMErrors::noSuchNode());
}

TEST_F(NodeTest, MayBePublishedAtThePathOfADisposedNode)
{
    CMValueNode::create(nodes, path)->dispose();
    CMValueNode::create(nodes, path)->setValue(TavoValue().setInt_(2));
    EXPECT_EQ(TavoValue(CMRoot()->getValue(path).toHash()).int_(), 2);
}

TEST_F(NodeTest, IsDisposedOfInAnyOrder)
{
    std::vector<CMNode *> made;
    for (const char *name : {"a", "b", "c", "d"}) {
        made.push_back(CMValueNode::create(nodes, path + name));
    }
    for (const std::size_t index : {1U, 3U, 0U, 2U}) {
        made[index]->dispose();
    }
    EXPECT_EQ(nodes->size(), 0);
}

TEST_F(NodeTest, IsNotPublishedAtThePathOfAnotherNode)
{
    const LogCapture log("Model");
    CMValueNode::create(nodes, path)->setValue(TavoValue().setInt_(1));
    CMValueNode *second = CMValueNode::create(nodes, path);
    second->setValue(TavoValue().setInt_(2));
    EXPECT_EQ(TavoValue(CMRoot()->getValue(path).toHash()).int_(), 1);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("A node is published at /test/node already, the new one is not"));
}

TEST_F(NodeTest, DoesNotAffectThePublishedNodeWhenItIsRefused)
{
    const LogCapture log("Model");
    CMValueNode::create(nodes, path)->setValue(TavoValue().setInt_(1));
    CMValueNode::create(nodes, path)->dispose();
    EXPECT_EQ(TavoValue(CMRoot()->getValue(path).toHash()).int_(), 1);
    EXPECT_EQ(nodes->size(), 1);
}

TEST_F(NodeTest, IsNotPublishedAtTheEmptyPath)
{
    const LogCapture log("Model");
    CMValueNode::create(nodes, CMPath())->setValue(TavoValue().setInt_(1));
    EXPECT_FALSE(CMRoot()->getValue(CMPath()).isValid());
    EXPECT_EQ(log.countAt(log4cplus::ERROR_LOG_LEVEL), 1);
}

TEST_F(NodeTest, AnswersUnsupportedRequestsWithAnError)
{
    Echo echo;
    CMActivateNode::create(nodes, path)
        ->setInvoke(&echo, &Echo::on_node_activated, Qt::DirectConnection);
    CMValueNode::create(nodes, path + "value");
    const Reply get;
    const Reply rows;
    const Reply match;
    const Reply set;
    CMRoot()->request(CMGetDataRequest(path, get));
    CMRoot()->request(CMGetRowsRequest(path, 0, -1, rows));
    CMRoot()->request(CMMatchRowRequest(path, 1, match));
    CMRoot()->request(CMSetDataRequest(path + "value", 1, set));
    for (const Reply &reply : {get, rows, match, set}) {
        EXPECT_EQ(reply.error().name(), CMErrors::notSupported());
        EXPECT_TRUE(reply.error().message().toString().contains(path.toString()));
    }
    EXPECT_FALSE(CMRoot()->getValue(path).isValid());
}

TEST_F(NodeTest, ReportsItsPublishingAndItsDisposal)
{
    ChangeRecorder recorder;
    CMRoot()->connectNodeChange(path, &recorder, &ChangeRecorder::on_node_changed);
    CMNode *node = CMValueNode::create(nodes, path);
    EXPECT_TRUE(recorder.nodes.empty()) << "reported from inside the call";
    node->dispose();
    settle();
    EXPECT_THAT(recorder.nodes, ElementsAre(std::pair(path, true), std::pair(path, false)));
}

TEST_F(NodeTest, ReportsNothingWhenItIsRefused)
{
    const LogCapture log("Model");
    CMValueNode::create(nodes, path);
    ChangeRecorder recorder;
    CMRoot()->connectNodeChange(path, &recorder, &ChangeRecorder::on_node_changed);
    CMValueNode::create(nodes, path)->dispose();
    settle();
    EXPECT_TRUE(recorder.nodes.empty());
}

TEST_F(NodeTest, LeavesKeptRequestsOpenWhenItIsDisposedOf)
{
    RequestKeeper keeper;
    CMActivateNode *node = CMActivateNode::create(nodes, path);
    node->setInvoke(&keeper, &RequestKeeper::on_node_activated, Qt::QueuedConnection);
    const Reply kept = CMRoot()->invoke(path, QVariant(1), Reply());
    settle();
    node->dispose();
    EXPECT_FALSE(kept.isFinished());
    keeper.requests.front().reply().setValue(2);
    EXPECT_EQ(kept.value(), QVariant(2));
}

TEST_F(NodeTest, AnswersQueuedRequestsWhenItIsDeletedWithItsReceiver)
{
    Reply waiting;
    {
        CMNodesWorker gone({}, QStringLiteral("Gone"));
        auto *keeper = new RequestKeeper;
        keeper->setParent(&gone);
        CMActivateNode::create(gone.nodes(), path)
            ->setInvoke(keeper, &RequestKeeper::on_node_activated, Qt::QueuedConnection);
        waiting = CMRoot()->invoke(path, QVariant(1), Reply());
        EXPECT_FALSE(waiting.isFinished());
    }
    EXPECT_EQ(waiting.error().name(), CMErrors::noAnswer());
}
