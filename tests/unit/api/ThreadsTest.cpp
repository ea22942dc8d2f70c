// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"
#include "support/EventThread.h"
#include "support/LogCapture.h"

#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>

using Reply = CMReply<QVariant>;

namespace {

/// A worker in its own thread, with one node that echoes.
class ThreadedWorker
{
public:
    explicit ThreadedWorker(const CMPath &nodePath)
    {
        m_thread.run([this, nodePath] {
            m_worker = std::make_unique<CMNodesWorker>(QVariantHash(), nodePath.name());
            m_echo = std::make_unique<Echo>();
            CMActivateNode::create(m_worker->nodes(), nodePath)
                ->setInvoke(m_echo.get(), &Echo::on_node_activated, Qt::QueuedConnection);
        });
    }
    ~ThreadedWorker() { end(); }

    Q_DISABLE_COPY_MOVE(ThreadedWorker)

    void end()
    {
        m_thread.run([this] {
            m_worker.reset();
            m_echo.reset();
        });
    }

    EventThread &thread() { return m_thread; }
    int calls()
    {
        return m_thread.run([this] { return m_echo->calls; });
    }
    bool answeredThere()
    {
        return m_thread.run([this] { return m_echo->thread == m_thread.thread(); });
    }

private:
    EventThread m_thread;
    std::unique_ptr<CMNodesWorker> m_worker;
    std::unique_ptr<Echo> m_echo;
};

template <typename Function>
void inThreads(int count, Function function)
{
    std::vector<std::future<void>> running;
    for (int i = 0; i < count; ++i) {
        running.push_back(std::async(std::launch::async, function, i));
    }
    for (auto &each : running) {
        each.get();
    }
}
} // namespace

TEST(WorkerThreadsTest, AnswerInTheirOwnThread)
{
    ThreadedWorker worker(path);
    EXPECT_EQ(CMRoot()->invoke(path, QVariant(7), Reply()).value(), QVariant(7));
    EXPECT_TRUE(worker.answeredThere());
}

TEST(WorkerThreadsTest, ReachEachOther)
{
    ThreadedWorker first(path + "first");
    ThreadedWorker second(path + "second");
    const auto ask = [](const CMPath &other) {
        return CMRoot()->invoke(other, other.toQVariant(), Reply()).value();
    };
    auto one = first.thread().start(
        [&] { return CMRoot()->invoke(path + "second", QVariant(1), Reply()); });
    auto two = second.thread().start(
        [&] { return CMRoot()->invoke(path + "first", QVariant(2), Reply()); });
    EXPECT_EQ(one.get().value(), QVariant(1));
    EXPECT_EQ(two.get().value(), QVariant(2));
    EXPECT_EQ(first.thread().run([&] { return ask(path + "second"); }),
              (path + "second").toQVariant());
}

TEST(WorkerThreadsTest, AnswerRequestsFromManyThreadsAtOnce)
{
    constexpr int threads = 8;
    constexpr int each = 500;
    ThreadedWorker worker(path);
    inThreads(threads, [](int thread) {
        for (int i = 0; i < each; ++i) {
            const int number = thread * each + i;
            ASSERT_EQ(CMRoot()->invoke(path, QVariant(number), Reply()).value(), QVariant(number));
        }
    });
    EXPECT_EQ(worker.calls(), threads * each);
}

TEST(WorkerThreadsTest, AnswerEveryRequestWhileTheyEnd)
{
    for (int round = 0; round < 20; ++round) {
        ThreadedWorker worker(path);
        std::promise<void> started;
        auto asking = std::async(std::launch::async, [&started] {
            started.set_value();
            for (int refused = 0; refused < 10;) {
                const Reply reply = CMRoot()->invoke(path, QVariant(1), Reply());
                ASSERT_TRUE(reply.waitForFinished(30000)) << "a request got no reply";
                if (reply.error().isError()) {
                    ++refused;
                } else {
                    EXPECT_EQ(reply.value(), QVariant(1));
                }
            }
        });
        started.get_future().wait();
        worker.end();
        asking.get();
    }
}

TEST(WorkerThreadsTest, LetOneWorkerOfManyPublishAPath)
{
    LogCapture log("Model");
    constexpr int threads = 8;
    for (int round = 0; round < 20; ++round) {
        std::vector<std::unique_ptr<CMNodesWorker>> workers;
        for (int i = 0; i < threads; ++i) {
            workers.push_back(std::make_unique<CMNodesWorker>(QVariantHash(), QString()));
        }
        inThreads(threads, [&workers](int i) {
            CMValueNode::create(workers[std::size_t(i)]->nodes(), path);
        });
        EXPECT_EQ(log.countAt(log4cplus::ERROR_LOG_LEVEL), threads - 1);
        EXPECT_TRUE(CMRoot()->getValue(path).isValid());
        log.clear();
    }
}

TEST(WorkerThreadsTest, AreReadWhileTheyPublishAndDispose)
{
    constexpr int enough = 1000;
    std::atomic<int> seen{0};
    auto reading = std::async(std::launch::async, [&seen] {
        for (int last = 0; seen < enough;) {
            // A node without a value reads as 0.
            const int number = TavoValue(CMRoot()->getValue(path).toHash()).int_();
            if (number == 0) {
                continue;
            }
            EXPECT_GE(number, last) << "a node was read after it was disposed of";
            last = number;
            ++seen;
        }
    });
    CMNodesWorker worker({}, QStringLiteral("Test"));
    for (int i = 1; seen < enough; ++i) {
        CMValueNode *node = CMValueNode::create(worker.nodes(), path);
        node->setValue(TavoValue().setInt_(i));
        node->dispose();
    }
    reading.get();
    EXPECT_FALSE(CMRoot()->getValue(path).isValid());
}

namespace {
class SubscriptionThreadsTest : public testing::Test
{
protected:
    void subscribeThere()
    {
        recorder = std::make_unique<ChangeRecorder>();
        recorder->moveToThread(thread.thread());
        CMRoot()->connectRowsChange(path, recorder.get(), &ChangeRecorder::on_rows_changed);
    }

    ~SubscriptionThreadsTest() override
    {
        thread.run([this] { recorder.reset(); });
        settle();
    }

    EventThread thread;
    std::unique_ptr<ChangeRecorder> recorder;
};
} // namespace

TEST_F(SubscriptionThreadsTest, ReportInTheirReceiversThread)
{
    subscribeThere();
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path, change), 1);
    thread.flush();
    EXPECT_EQ(thread.run([this] { return recorder->rows.size(); }), 1U);
    EXPECT_EQ(thread.run([this] { return recorder->thread; }), thread.thread());
}

TEST_F(SubscriptionThreadsTest, ReportChangesFromOtherThreadsInTheirReceiversThread)
{
    ChangeRecorder here;
    CMRoot()->connectRowsChange(path, &here, &ChangeRecorder::on_rows_changed);
    thread.run([] { CMSubscribe::raiseRowsChange(path, change); });
    EXPECT_TRUE(waitFor([&here] { return here.rows.size() == 1; }));
    EXPECT_EQ(here.thread, QThread::currentThread());
}

TEST_F(SubscriptionThreadsTest, KeepTheOrderOfTheChangesOfOneThread)
{
    subscribeThere();
    for (int i = 0; i < 1000; ++i) {
        CMSubscribe::raiseRowsChange(path, change, i, 1);
    }
    thread.flush();
    const auto rows = thread.run([this] { return recorder->rows; });
    ASSERT_EQ(rows.size(), 1000U);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(rows[std::size_t(i)].first, i);
    }
}

TEST_F(SubscriptionThreadsTest, EndFromAnotherThread)
{
    subscribeThere();
    CMRoot()->disconnectRowsChange(path, recorder.get(), &ChangeRecorder::on_rows_changed);
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path, change), 0);
    thread.flush();
    EXPECT_TRUE(thread.run([this] { return recorder->rows.empty(); }));
}

TEST_F(SubscriptionThreadsTest, EndWithTheirReceiverWhileChangesAreRaised)
{
    std::atomic<bool> done{false};
    auto raising = std::async(std::launch::async, [&done] {
        while (!done) {
            CMSubscribe::raiseRowsChange(path, change);
        }
    });
    thread.run([] {
        for (int i = 0; i < 500; ++i) {
            ChangeRecorder shortLived;
            CMRoot()->connectRowsChange(path, &shortLived, &ChangeRecorder::on_rows_changed);
            QCoreApplication::processEvents();
        }
    });
    done = true;
    raising.get();
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path, change), 0);
}

TEST_F(SubscriptionThreadsTest, BeginAndEndInManyThreadsWhileChangesAreRaised)
{
    inThreads(8, [](int) {
        ChangeRecorder receiver;
        for (int i = 0; i < 200; ++i) {
            CMRoot()->connectRowsChange(path, &receiver, &ChangeRecorder::on_rows_changed);
            EXPECT_GE(CMSubscribe::raiseRowsChange(path, change), 1);
            CMRoot()->disconnectRowsChange(path, &receiver, &ChangeRecorder::on_rows_changed);
        }
    });
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path, change), 0);
}

TEST_F(SubscriptionThreadsTest, LeaveNothingBehindInAThreadThatHasEnded)
{
    {
        EventThread ending;
        auto receiver = std::make_unique<ChangeRecorder>();
        receiver->moveToThread(ending.thread());
        for (int i = 0; i < 100; ++i) {
            CMRoot()->connectRowsChange(path, receiver.get(), &ChangeRecorder::on_rows_changed);
        }
        ending.run([&receiver] { receiver.reset(); });
    }
    // Enough for the model to sweep ended subscriptions. LeakSanitizer checks the rest.
    ChangeRecorder receiver;
    for (int i = 0; i < 1000; ++i) {
        CMRoot()->connectRowsChange(path, &receiver, &ChangeRecorder::on_rows_changed);
    }
    EXPECT_EQ(CMSubscribe::raiseRowsChange(path, change), 1000);
    for (int i = 0; i < 1000; ++i) {
        CMRoot()->disconnectRowsChange(path, &receiver, &ChangeRecorder::on_rows_changed);
    }
}

TEST(ThreadsTest, ACommandIsFreedInItsOwnThreadEvenIfAnotherThreadReleasesItLast)
{
    CMNodesWorker worker({}, QStringLiteral("Test"));
    std::promise<void> requested;
    std::promise<void> disposed;
    QThread *freedIn = nullptr;
    CMActivateNode *node = CMActivateNode::create(worker.nodes(), path);
    node->doSetInvoke([&](CMActivateNode *made) {
        const auto take = [&](const CMSetDataRequest &) {
            requested.set_value();
            disposed.get_future().wait();
        };
        tavoConnect(made, &CMActivateNode::privateInvoke, made, take, Qt::DirectConnection);
    });
    const auto note = [&freedIn] { freedIn = QThread::currentThread(); };
    tavoConnect(node, &QObject::destroyed, &worker, note, Qt::DirectConnection);

    EventThread other;
    auto request = other.start([] { CMRoot()->invoke(path, QVariant(), {}); });
    requested.get_future().wait();
    node->dispose();
    EXPECT_EQ(freedIn, nullptr) << "the request is still using it";
    disposed.set_value();
    request.get();
    EXPECT_TRUE(waitFor([&freedIn] { return freedIn != nullptr; }));
    EXPECT_EQ(freedIn, QThread::currentThread());
}
