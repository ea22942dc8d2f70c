// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <future>

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Reply = CMReply<QVariant>;

namespace {
/// Keeps the requests for values, unanswered.
class LateWorker : public CMNodesWorker
{
public:
    LateWorker()
        : CMNodesWorker({}, QStringLiteral("Late"))
    {
    }
    void getDataRequest(const CMGetDataRequest &request) override
    {
        m_requested.set_value(request);
    }

    /// Waits for a request for a value and returns it.
    CMGetDataRequest requested() { return m_requested.get_future().get(); }

private:
    std::promise<CMGetDataRequest> m_requested;
};

/// Records the kinds of the subscriptions that are made and ended through it.
class SubscribedWorker : public CMNodesWorker
{
public:
    SubscribedWorker()
        : CMNodesWorker({}, QStringLiteral("Subscribed"))
    {
    }
    void connectChange(ChangeType type, const CMPath &path, QObject *receiver,
                       std::function<bool(ChangeNotifier *)> connectTo) override
    {
        connected.push_back(int(type));
        CMNodesWorker::connectChange(type, path, receiver, std::move(connectTo));
    }
    void disconnectChange(ChangeType type, const CMPath &path, QObject *receiver,
                          std::function<void(ChangeNotifier *)> disconnectFrom) override
    {
        disconnected.push_back(int(type));
        CMNodesWorker::disconnectChange(type, path, receiver, std::move(disconnectFrom));
    }

    std::vector<int> connected;
    std::vector<int> disconnected;
};

class WorkerTest : public testing::Test
{
protected:
    Reply send(const CMPath &to, const QVariant &value = 5)
    {
        return CMRoot()->invoke(to, value, Reply());
    }

    CMNodesWorker worker{{{"key", "value"}}, QStringLiteral("Test")};
    Echo echo;
};
} // namespace

TEST_F(WorkerTest, HasItsNameAndItsConfiguration)
{
    EXPECT_EQ(worker.name(), "Test");
    EXPECT_EQ(worker.config(), (QVariantHash{{"key", "value"}}));
}

TEST_F(WorkerTest, TakesTheRequestsOnItsNodesFromTheRoot)
{
    CMActivateNode::create(worker.nodes(), path)
        ->setInvoke(&echo, &Echo::on_node_activated, Qt::DirectConnection);
    EXPECT_EQ(send(path, "text").value(), QVariant("text"));
}

TEST_F(WorkerTest, TakesARecordAsARequestsValue)
{
    CMActivateNode::create(worker.nodes(), path)
        ->setInvoke(&echo, &Echo::on_node_activated, Qt::DirectConnection);
    const TavoValue value = TavoValue().setString_("text");
    const Reply reply;
    EXPECT_EQ(CMRoot()->invoke(path, value, reply), reply);
    EXPECT_EQ(TavoValue(reply.value().toHash()), value);
}

TEST_F(WorkerTest, AnswersARequestToAPathWithoutANodeWithAnErrorThatNamesThePath)
{
    const Reply reply = send(path);
    EXPECT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.error().name(), CMErrors::noSuchNode());
    EXPECT_TRUE(reply.error().message().toString().contains(path.toString()));
}

TEST_F(WorkerTest, AnswersEveryKindOfRequestToAPathWithoutANode)
{
    const Reply set;
    const Reply data;
    const Reply rows;
    const Reply match;
    CMRoot()->request(CMSetDataRequest(path, 5, set));
    CMRoot()->request(CMGetDataRequest(path, data));
    CMRoot()->request(CMGetRowsRequest(path, 0, -1, rows));
    CMRoot()->request(CMMatchRowRequest(path, 5, match));
    for (const Reply &reply : {set, data, rows, match}) {
        EXPECT_EQ(reply.error().name(), CMErrors::noSuchNode());
    }
}

TEST_F(WorkerTest, IsReachedByTheExactPathOnly)
{
    CMActivateNode::create(worker.nodes(), path)
        ->setInvoke(&echo, &Echo::on_node_activated, Qt::DirectConnection);
    for (const CMPath &other :
         {path + "below", path.parent(), CMPath(), CMPath(QStringLiteral("/TEST/node"))}) {
        EXPECT_EQ(send(other).error().name(), CMErrors::noSuchNode()) << other;
    }
    EXPECT_EQ(echo.calls, 0);
}

TEST_F(WorkerTest, ReachesItsOwnNodesOnly)
{
    CMNodesWorker other({}, QStringLiteral("Other"));
    CMActivateNode::create(worker.nodes(), path)
        ->setInvoke(&echo, &Echo::on_node_activated, Qt::DirectConnection);
    EXPECT_EQ(worker.invoke(path, QVariant(1), Reply()).value(), QVariant(1));
    EXPECT_EQ(other.invoke(path, QVariant(1), Reply()).error().name(), CMErrors::noSuchNode());
}

TEST_F(WorkerTest, HandsEachKindOfRequestToTheNode)
{
    auto *rows = CMListRowsNode::create(worker.nodes(), path);
    rows->rowsAppend(CMPath(QStringLiteral("/a")));
    CMValueNode::create(worker.nodes(), path + "value")->setValue(TavoValue().setInt_(7));
    const Reply all;
    const Reply match;
    const Reply value;
    CMRoot()->request(CMGetRowsRequest(path, 0, -1, all));
    CMRoot()->request(CMMatchRowRequest(path, QStringLiteral("/a"), match));
    CMRoot()->request(CMGetDataRequest(path + "value", value));
    EXPECT_EQ(all.value(), QVariant(QVariantList{"/a"}));
    EXPECT_EQ(match.value(), QVariant(0));
    EXPECT_EQ(TavoValue(value.value().toHash()).int_(), 7);
}

TEST_F(WorkerTest, HandsEachKindOfRequestOfItsOwnToTheNode)
{
    auto *rows = CMListRowsNode::create(worker.nodes(), path);
    rows->rowsAppend(CMPath(QStringLiteral("/a")));
    CMValueNode::create(worker.nodes(), path + "value")->setValue(TavoValue().setInt_(7));
    const Reply all;
    const Reply match;
    worker.request(CMGetRowsRequest(path, 0, -1, all));
    worker.request(CMMatchRowRequest(path, QStringLiteral("/a"), match));
    EXPECT_EQ(all.value(), QVariant(QVariantList{"/a"}));
    EXPECT_EQ(match.value(), QVariant(0));
    EXPECT_EQ(TavoValue(worker.getValue(path + "value").toHash()).int_(), 7);
}

TEST_F(WorkerTest, IgnoresARequestWithoutAKind)
{
    worker.request(CMRequest());
    CMRoot()->request(CMRequest());
}

TEST_F(WorkerTest, AnswersAPingWithItsName)
{
    const Reply own;
    const Reply root;
    worker.ping(CMSetDataRequest(CMPath(), QVariant(), own));
    CMRoot()->ping(CMSetDataRequest(CMPath(), QVariant(), root));
    EXPECT_EQ(own.value(), QVariant("Test"));
    EXPECT_EQ(root.value(), QVariant("Root"));
}

TEST_F(WorkerTest, TracesItsNodesToTheLog)
{
    const LogCapture log("Model");
    CMValueNode::create(worker.nodes(), path + "a");
    CMValueNode::create(worker.nodes(), path + "b");
    worker.trace();
    EXPECT_THAT(
        log.messages(log4cplus::INFO_LOG_LEVEL),
        UnorderedElementsAre("Worker Test has 2 nodes", "Node /test/node/a", "Node /test/node/b"));
}

TEST_F(WorkerTest, TracesEveryNodeOfTheModelByTheRoot)
{
    const LogCapture log("Model");
    CMNodesWorker other({}, QStringLiteral("Other"));
    CMValueNode::create(other.nodes(), path + "b");
    CMValueNode::create(worker.nodes(), path + "a");
    CMRoot()->trace();
    EXPECT_THAT(log.messages(log4cplus::INFO_LOG_LEVEL),
                ElementsAre("The model has 2 nodes", "Node /test/node/a", "Node /test/node/b"));
}

TEST_F(WorkerTest, DisposesOfItsNodesWhenItIsDeleted)
{
    {
        CMNodesWorker gone({}, QStringLiteral("Gone"));
        CMValueNode::create(gone.nodes(), path)->setValue(TavoValue().setInt_(1));
        EXPECT_TRUE(CMRoot()->getValue(path).isValid());
    }
    EXPECT_EQ(send(path).error().name(), CMErrors::noSuchNode());
}

TEST_F(WorkerTest, DisposesOfItsNodesBeforeItsChildrenAreDeleted)
{
    class Child : public QObject
    {
    public:
        Child(QObject *parent, CMError *seen)
            : QObject(parent)
            , m_seen(seen)
        {
        }
        ~Child() override { *m_seen = CMRoot()->invoke(path, QVariant(), Reply()).error(); }

    private:
        CMError *m_seen;
    };
    CMError seen;
    {
        CMNodesWorker gone({}, QStringLiteral("Gone"));
        CMValueNode::create(gone.nodes(), path);
        new Child(&gone, &seen);
    }
    EXPECT_EQ(seen.name(), CMErrors::noSuchNode());
}

TEST_F(WorkerTest, ReadsAValueThatIsAnsweredLater)
{
    LateWorker late;
    auto reading = std::async(std::launch::async, [&late] { return late.getValue(path); });
    const CMGetDataRequest request = late.requested();
    EXPECT_EQ(reading.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    request.reply().setValue(7);
    EXPECT_EQ(reading.get(), QVariant(7));
}

TEST_F(WorkerTest, CanTakeTheSubscriptionsToRowsItself)
{
    SubscribedWorker subscribed;
    ChangeRecorder recorder;
    CMAbstractWorker &root = subscribed;
    root.connectRowsChange(path, &recorder, &ChangeRecorder::on_rows_changed);
    EXPECT_THAT(subscribed.connected, ElementsAre(2));
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path, {}), 1);
    root.disconnectRowsChange(path, &recorder, &ChangeRecorder::on_rows_changed);
    EXPECT_THAT(subscribed.disconnected, ElementsAre(2));
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path, {}), 0);
}
