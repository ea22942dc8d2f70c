// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"
#include "support/EventThread.h"

#include <QPointer>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <vector>

using testing::ElementsAre;
using Reply = CMReply<QVariant>;

namespace {

/// A watcher that does not delete itself.
class Watcher : public CMReplyWatcher
{
public:
    void replyFinished(const CMVoidReply &reply) override
    {
        ++told;
        finished = reply.isFinished();
        error = reply.error();
    }

    int told = 0;
    bool finished = false;
    CMError error;
};

class ReplyListener : public QObject
{
public:
    void on_reply_finished(const CMVoidReply &reply) { replies.push_back(reply); }
    std::vector<CMVoidReply> replies;
};

class CMReplyWatcherTest : public testing::Test
{
protected:
    CMVoidReply::Callback note(int number)
    {
        return [this, number](const CMVoidReply & /*reply*/) { notes.push_back(number); };
    }

    Reply reply;
    QObject context;
    std::vector<int> notes;
};
} // namespace

TEST_F(CMReplyWatcherTest, IsNotCalledBeforeTheReplyIsFinished)
{
    reply.addWatcher(&context, note(1));
    settle();
    EXPECT_TRUE(notes.empty());
    reply.setValue(1);
}

TEST_F(CMReplyWatcherTest, IsCalledOnceForAValue)
{
    Watcher watcher;
    reply.addWatcher(&watcher);
    reply.setValue(1);
    reply.setValue(2);
    EXPECT_EQ(watcher.told, 1);
    EXPECT_TRUE(watcher.finished);
    EXPECT_FALSE(watcher.error.isError());
}

TEST_F(CMReplyWatcherTest, IsCalledOnceForAnError)
{
    Watcher watcher;
    reply.addWatcher(&watcher);
    reply.setError(broken);
    reply.setError(broken);
    EXPECT_EQ(watcher.told, 1);
    EXPECT_EQ(watcher.error, broken);
}

TEST_F(CMReplyWatcherTest, IsCalledInTheOrderOfRegistration)
{
    for (int number = 1; number <= 5; ++number) {
        reply.addWatcher(&context, note(number), Qt::DirectConnection);
    }
    reply.setValue(1);
    EXPECT_THAT(notes, ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(CMReplyWatcherTest, MayCallBackIntoTheReply)
{
    QVariant read;
    reply.addWatcher(
        &context,
        [&](const CMVoidReply &finished) {
            read = Reply(finished).value();
            finished.setError(broken);
            finished.addWatcher(&context, note(1), Qt::DirectConnection);
            notes.push_back(2);
        },
        Qt::DirectConnection);
    reply.addWatcher(&context, note(3), Qt::DirectConnection);
    reply.setValue(7);
    EXPECT_EQ(read, QVariant(7));
    EXPECT_FALSE(reply.error().isError());
    EXPECT_THAT(notes, ElementsAre(1, 2, 3));
}

TEST_F(CMReplyWatcherTest, IsCalledWhenAddedAfterTheEnd)
{
    reply.setValue(1);
    reply.addWatcher(&context, note(1), Qt::DirectConnection);
    Watcher watcher;
    reply.addWatcher(&watcher);
    EXPECT_THAT(notes, ElementsAre(1));
    EXPECT_EQ(watcher.told, 1);
}

TEST_F(CMReplyWatcherTest, IsCalledFromTheEventLoopWhenQueued)
{
    reply.addWatcher(&context, note(1), Qt::QueuedConnection);
    reply.setValue(1);
    EXPECT_TRUE(notes.empty());
    settle();
    EXPECT_THAT(notes, ElementsAre(1));
}

TEST_F(CMReplyWatcherTest, IsCalledInItsContextsThread)
{
    EventThread other;
    auto otherContext = std::make_unique<QObject>();
    otherContext->moveToThread(other.thread());
    std::promise<QThread *> told;
    reply.addWatcher(otherContext.get(),
                     [&told](const CMVoidReply &) { told.set_value(QThread::currentThread()); });
    reply.setValue(1);
    EXPECT_EQ(told.get_future().get(), other.thread());
    other.run([&] { otherContext.reset(); });
}

TEST_F(CMReplyWatcherTest, IsCalledInItsContextsThreadWhenAddedAfterTheEnd)
{
    EventThread other;
    auto otherContext = std::make_unique<QObject>();
    otherContext->moveToThread(other.thread());
    std::promise<QThread *> told;
    reply.setValue(1);
    reply.addWatcher(otherContext.get(),
                     [&told](const CMVoidReply &) { told.set_value(QThread::currentThread()); });
    EXPECT_EQ(told.get_future().get(), other.thread());
    other.run([&] { otherContext.reset(); });
}

TEST_F(CMReplyWatcherTest, IsCalledInItsContextsThreadWhenAnotherThreadAnswers)
{
    EventThread other;
    QThread *told = nullptr;
    reply.addWatcher(&context, [&told](const CMVoidReply &) { told = QThread::currentThread(); });
    other.run([this] { reply.setValue(1); });
    EXPECT_TRUE(waitFor([&told] { return told != nullptr; }));
    EXPECT_EQ(told, QThread::currentThread());
}

TEST_F(CMReplyWatcherTest, IsCalledInTheThreadThatAddedItWithoutAContext)
{
    EventThread other;
    QThread *told = nullptr;
    reply.addWatcher(nullptr, [&told](const CMVoidReply &) { told = QThread::currentThread(); });
    other.run([this] { reply.setValue(1); });
    EXPECT_TRUE(waitFor([&told] { return told != nullptr; }));
    EXPECT_EQ(told, QThread::currentThread());
}

TEST_F(CMReplyWatcherTest, IsCalledInAnotherThreadThatAddedItWithoutAContext)
{
    EventThread other;
    std::promise<QThread *> told;
    other.run([&] {
        reply.addWatcher(
            nullptr, [&told](const CMVoidReply &) { told.set_value(QThread::currentThread()); });
    });
    reply.setValue(1);
    EXPECT_EQ(told.get_future().get(), other.thread());
}

TEST_F(CMReplyWatcherTest, IsNotCalledOnceItsContextIsGone)
{
    auto gone = std::make_unique<QObject>();
    reply.addWatcher(gone.get(), note(1), Qt::DirectConnection);
    reply.addWatcher(gone.get(), note(2), Qt::QueuedConnection);
    reply.addWatcher(&context, note(3), Qt::DirectConnection);
    gone.reset();
    reply.setValue(1);
    settle();
    EXPECT_THAT(notes, ElementsAre(3));
}

TEST_F(CMReplyWatcherTest, IsNotCalledWhenItsContextIsDeletedBeforeAQueuedCall)
{
    auto gone = std::make_unique<QObject>();
    reply.addWatcher(gone.get(), note(1), Qt::QueuedConnection);
    reply.setValue(1);
    gone.reset();
    settle();
    EXPECT_TRUE(notes.empty());
}

TEST_F(CMReplyWatcherTest, IsCalledWithAnErrorWhenTheLastCopyOfTheReplyIsDropped)
{
    Watcher watcher;
    {
        const Reply dropped;
        dropped.addWatcher(&watcher);
        dropped.addWatcher(&context, note(1), Qt::DirectConnection);
    }
    EXPECT_EQ(watcher.told, 1);
    EXPECT_TRUE(watcher.finished);
    EXPECT_EQ(watcher.error.name(), CMErrors::noAnswer());
    EXPECT_THAT(notes, ElementsAre(1));
}

TEST_F(CMReplyWatcherTest, KeepsTheReplyUntilAQueuedCallIsMade)
{
    QVariant read;
    {
        const Reply shortLived;
        shortLived.addWatcher(
            &context, [&read](const CMVoidReply &finished) { read = Reply(finished).value(); },
            Qt::QueuedConnection);
        shortLived.setValue(7);
    }
    settle();
    EXPECT_EQ(read, QVariant(7));
}

TEST_F(CMReplyWatcherTest, PassesATypedReplyToATypedCallback)
{
    QVariant read;
    reply.onFinished(
        &context, [&read](const Reply &finished) { read = finished.value(); },
        Qt::DirectConnection);
    reply.setValue(7);
    EXPECT_EQ(read, QVariant(7));
}

TEST_F(CMReplyWatcherTest, PassesATypedReplyToATypedCallbackWhenDropped)
{
    CMError error;
    {
        const Reply dropped;
        dropped.onFinished(
            &context, [&error](const Reply &finished) { error = finished.error(); },
            Qt::DirectConnection);
    }
    EXPECT_EQ(error.name(), CMErrors::noAnswer());
}

TEST_F(CMReplyWatcherTest, CallsASlot)
{
    ReplyListener listener;
    reply.connectFinished(&listener, &ReplyListener::on_reply_finished);
    reply.setError(broken);
    ASSERT_EQ(listener.replies.size(), 1U);
    EXPECT_EQ(listener.replies.front().error(), broken);
}

TEST_F(CMReplyWatcherTest, EmitsASignalAtTheEndAndDeletesItself)
{
    auto *watcher = new CMReplyWatcherObject;
    const QPointer<CMReplyWatcherObject> alive = watcher;
    ReplyListener listener;
    tavoConnect(watcher, &CMReplyWatcherObject::finishedSignal, &listener,
                &ReplyListener::on_reply_finished);
    reply.addWatcher(watcher);
    reply.setValue(1);
    EXPECT_EQ(listener.replies.size(), 1U);
    EXPECT_TRUE(alive.isNull());
}

TEST_F(CMReplyWatcherTest, IsCalledOnceWhenAddedWhileAnotherThreadAnswers)
{
    for (int round = 0; round < 100; ++round) {
        const Reply raced;
        std::atomic<int> told{0};
        auto answering = std::async(std::launch::async, [=] { raced.setValue(1); });
        for (int i = 0; i < 20; ++i) {
            raced.addWatcher(
                &context, [&told](const CMVoidReply &) { ++told; }, Qt::DirectConnection);
        }
        answering.get();
        EXPECT_EQ(told, 20);
    }
}

TEST(CMReplyDeathTest, RefusesAReplyOfTheWrongType)
{
    const auto callback = CMReply<int>::finishCallback([](const CMReply<int> &) {});
    EXPECT_DEATH(callback(Reply()), "Wrong type passed to CMReply::onFinished\\(\\)!");
}

TEST(CMReplyDeathTest, RefusesAnEmptyView)
{
    const auto callback = Reply::finishCallback([](const Reply &) {});
    EXPECT_DEATH(callback(CMVoidReply()), "Wrong type passed to CMReply::onFinished\\(\\)!");
}

TEST(CMReplyDeathTest, RefusesToWatchAnEmptyView)
{
    QObject context;
    EXPECT_DEATH(CMVoidReply().addWatcher(&context, [](const CMVoidReply &) {}), "m_data");
}
