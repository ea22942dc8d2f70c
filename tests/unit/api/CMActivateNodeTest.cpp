// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"
#include "support/EventThread.h"
#include "support/LogCapture.h"

#include <QThread>

#include <gtest/gtest.h>

#include <memory>

using Reply = CMReply<QVariant>;

namespace {
class CMActivateNodeTest : public testing::Test
{
protected:
    Reply activate(const QVariant &value = 5) { return CMRoot()->invoke(path, value, Reply()); }

    void bind(Echo *receiver, Qt::ConnectionType type)
    {
        node->setInvoke(receiver, &Echo::on_node_activated, type);
    }

    CMNodesWorker worker{{}, QStringLiteral("Test")};
    CMActivateNode *node = CMActivateNode::create(worker.nodes(), path);
    Echo echo;
};

using CMActivateNodeDeathTest = CMActivateNodeTest;
} // namespace

TEST_F(CMActivateNodeTest, CallsADirectlyBoundSlotWithinTheCall)
{
    bind(&echo, Qt::DirectConnection);
    const Reply reply = activate("text");
    EXPECT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.value(), QVariant("text"));
    EXPECT_EQ(echo.calls, 1);
}

TEST_F(CMActivateNodeTest, CallsAQueuedSlotFromTheEventLoop)
{
    bind(&echo, Qt::QueuedConnection);
    const Reply reply = activate("text");
    EXPECT_EQ(echo.calls, 0);
    EXPECT_FALSE(reply.isFinished());
    settle();
    EXPECT_EQ(echo.calls, 1);
    EXPECT_EQ(reply.value(), QVariant("text"));
}

TEST_F(CMActivateNodeTest, CallsAnAutomaticallyBoundSlotDirectlyInItsThread)
{
    bind(&echo, Qt::AutoConnection);
    EXPECT_TRUE(activate().isFinished());
}

TEST_F(CMActivateNodeTest, CallsAnAutomaticallyBoundSlotInItsThreadFromAnotherThread)
{
    bind(&echo, Qt::AutoConnection);
    EventThread other;
    const Reply reply = other.run([this] { return activate(); });
    EXPECT_TRUE(waitFor([&reply] { return reply.isFinished(); }));
    EXPECT_EQ(echo.thread, QThread::currentThread());
}

TEST_F(CMActivateNodeTest, CallsASlotInTheThreadOfItsReceiver)
{
    EventThread other;
    auto receiver = std::make_unique<Echo>();
    receiver->moveToThread(other.thread());
    bind(receiver.get(), Qt::QueuedConnection);
    EXPECT_EQ(activate(7).value(), QVariant(7));
    other.run([&receiver, &other] {
        EXPECT_EQ(receiver->thread, other.thread());
        receiver.reset();
    });
}

TEST_F(CMActivateNodeTest, CallsItsSlotOnceForEachRequestInOrder)
{
    RequestKeeper keeper;
    node->setInvoke(&keeper, &RequestKeeper::on_node_activated, Qt::QueuedConnection);
    for (int i = 0; i < 100; ++i) {
        activate(i);
    }
    settle();
    ASSERT_EQ(keeper.requests.size(), 100U);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(keeper.requests[std::size_t(i)].value(), QVariant(i));
    }
}

TEST_F(CMActivateNodeTest, CanBeAnsweredAfterTheSlotHasReturned)
{
    RequestKeeper keeper;
    node->setInvoke(&keeper, &RequestKeeper::on_node_activated, Qt::DirectConnection);
    const Reply reply = activate();
    EXPECT_FALSE(reply.isFinished());
    keeper.requests.front().reply().setValue(8);
    EXPECT_EQ(reply.value(), QVariant(8));
}

TEST_F(CMActivateNodeTest, IsNotPublishedBeforeItIsBound)
{
    ChangeRecorder recorder;
    CMRoot()->connectNodeChange(path, &recorder, &ChangeRecorder::on_node_changed);
    const Reply early = activate();
    EXPECT_EQ(early.error().name(), CMErrors::noSuchNode());
    EXPECT_TRUE(early.error().message().toString().contains(path.toString()));
    settle();
    EXPECT_TRUE(recorder.nodes.empty());

    bind(&echo, Qt::DirectConnection);
    settle();
    EXPECT_EQ(recorder.nodes.size(), 1U);
    EXPECT_FALSE(activate().error().isError());
}

TEST_F(CMActivateNodeTest, IsPublishedOnceWhenItIsBoundTwice)
{
    const LogCapture log("Model");
    bind(&echo, Qt::DirectConnection);
    bind(&echo, Qt::QueuedConnection);
    EXPECT_EQ(log.countAt(log4cplus::ERROR_LOG_LEVEL), 0);
}

TEST_F(CMActivateNodeTest, AnswersWithAnErrorWhenItsReceiverIsGone)
{
    auto gone = std::make_unique<Echo>();
    bind(gone.get(), Qt::QueuedConnection);
    gone.reset();
    EXPECT_EQ(activate().error().name(), CMErrors::noAnswer());
}

TEST_F(CMActivateNodeTest, AnswersAQueuedRequestWithAnErrorWhenItsReceiverIsDeleted)
{
    auto gone = std::make_unique<Echo>();
    bind(gone.get(), Qt::QueuedConnection);
    const Reply reply = activate();
    gone.reset();
    EXPECT_EQ(reply.error().name(), CMErrors::noAnswer());
}

TEST_F(CMActivateNodeTest, CallsTheSlotThatItWasBoundToLast)
{
    Echo second;
    bind(&echo, Qt::DirectConnection);
    bind(&second, Qt::DirectConnection);
    activate();
    EXPECT_EQ(echo.calls, 0);
    EXPECT_EQ(second.calls, 1);
}

TEST_F(CMActivateNodeTest, CallsItsSlotOnceWhenBoundToItTwice)
{
    bind(&echo, Qt::DirectConnection);
    bind(&echo, Qt::DirectConnection);
    activate();
    EXPECT_EQ(echo.calls, 1);
}

TEST_F(CMActivateNodeTest, PassesItselfToTheConnector)
{
    const CMActivateNode *handed = nullptr;
    node->doSetInvoke([&handed](CMActivateNode *given) { handed = given; });
    EXPECT_EQ(handed, node);
}

TEST_F(CMActivateNodeTest, MayBeDisposedOfByItsSlot)
{
    class Disposer : public QObject
    {
    public:
        explicit Disposer(CMActivateNode *disposed)
            : m_node(disposed)
        {
        }
        void on_node_activated(const CMSetDataRequest &request)
        {
            m_node->dispose();
            request.reply().setValue(1);
        }

    private:
        CMActivateNode *m_node;
    };
    Disposer disposer(node);
    node->setInvoke(&disposer, &Disposer::on_node_activated, Qt::DirectConnection);
    EXPECT_EQ(activate().value(), QVariant(1));
    EXPECT_EQ(activate().error().name(), CMErrors::noSuchNode());
}

TEST_F(CMActivateNodeDeathTest, RefusesANullReceiver)
{
    EXPECT_DEATH(bind(nullptr, Qt::QueuedConnection), "\"receiver\"");
}
