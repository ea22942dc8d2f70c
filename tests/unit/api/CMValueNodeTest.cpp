// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"
#include "support/EventThread.h"

#include <QMutex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

using namespace std::chrono_literals;
using testing::ElementsAre;
using Reply = CMReply<QVariant>;

namespace {
TavoValue number(int value)
{
    return TavoValue().setInt_(value);
}

class CMValueNodeTest : public testing::Test
{
protected:
    void SetUp() override
    {
        CMRoot()->connectValueChange(path, &recorder, &ChangeRecorder::on_value_changed);
    }

    CMNodesWorker worker{{}, QStringLiteral("Test")};
    CMValueNode *node = CMValueNode::create(worker.nodes(), path);
    ChangeRecorder recorder;
};
} // namespace

TEST_F(CMValueNodeTest, HoldsAnEmptyValueAtFirst)
{
    EXPECT_TRUE(node->value().isEmpty());
    EXPECT_EQ(CMRoot()->getValue(path), QVariant(QVariantHash()));
}

TEST_F(CMValueNodeTest, ReturnsTheValueThatWasSetLast)
{
    node->setValue(number(1));
    node->setValue(number(2));
    EXPECT_EQ(node->value(), number(2));
    EXPECT_EQ(CMRoot()->getValue(path), carried(2));
}

TEST_F(CMValueNodeTest, AnswersARequestForItsData)
{
    node->setValue(number(1));
    const Reply reply;
    CMRoot()->getDataRequest(CMGetDataRequest(path, reply));
    EXPECT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.value(), carried(1));
}

TEST_F(CMValueNodeTest, IsReadWhileTheEventLoopOfItsWorkerIsBlocked)
{
    EventThread thread;
    std::unique_ptr<CMNodesWorker> busy;
    std::promise<void> standing;
    std::promise<void> goOn;
    auto working = thread.start([&] {
        busy = std::make_unique<CMNodesWorker>(QVariantHash(), QStringLiteral("Busy"));
        CMValueNode::create(busy->nodes(), path + "busy")->setValue(number(7));
        standing.set_value();
        goOn.get_future().wait();
        busy.reset();
    });
    standing.get_future().wait();
    EXPECT_EQ(CMRoot()->getValue(path + "busy"), carried(7));
    goOn.set_value();
    working.get();
}

TEST_F(CMValueNodeTest, ReadsAsInvalidWithoutANode)
{
    EXPECT_FALSE(CMRoot()->getValue(path + "none").isValid());
    EXPECT_FALSE(CMRoot()->getValue(CMPath()).isValid());
}

TEST_F(CMValueNodeTest, ReportsAChangeFromTheEventLoopOnly)
{
    node->setValue(number(1));
    EXPECT_TRUE(recorder.values.empty());
    settle();
    EXPECT_THAT(recorder.values, ElementsAre(std::pair(path, carried(1))));
}

TEST_F(CMValueNodeTest, ReportsEveryChangeInOrder)
{
    for (int i = 1; i <= 3; ++i) {
        node->setValue(number(i));
    }
    settle();
    EXPECT_THAT(recorder.values,
                ElementsAre(std::pair(path, carried(1)), std::pair(path, carried(2)),
                            std::pair(path, carried(3))));
}

TEST_F(CMValueNodeTest, ReportsNothingWhenTheValueIsTheSame)
{
    node->setValue(number(1));
    node->setValue(number(1));
    settle();
    EXPECT_EQ(recorder.values.size(), 1U);
}

TEST_F(CMValueNodeTest, DoesNotReportToSubscribersOfRows)
{
    CMRoot()->connectRowsChange(path, &recorder, &ChangeRecorder::on_rows_changed);
    node->setValue(number(1));
    settle();
    EXPECT_TRUE(recorder.rows.empty());
}

TEST_F(CMValueNodeTest, IsReadUnderTheLockThatItWasGiven)
{
    QMutex lock;
    CMValueNode *locked = CMValueNode::create(worker.nodes(), path + "locked", &lock);
    locked->setValue(number(1));
    lock.lock();
    auto reading =
        std::async(std::launch::async, [] { return CMRoot()->getValue(path + "locked"); });
    EXPECT_EQ(reading.wait_for(50ms), std::future_status::timeout);
    lock.unlock();
    EXPECT_EQ(reading.get(), carried(1));
}

TEST_F(CMValueNodeTest, IsWrittenUnderTheLockThatItWasGiven)
{
    QMutex lock;
    CMValueNode *locked = CMValueNode::create(worker.nodes(), path + "locked", &lock);
    lock.lock();
    auto writing = std::async(std::launch::async, [locked] { locked->setValue(number(1)); });
    EXPECT_EQ(writing.wait_for(50ms), std::future_status::timeout);
    lock.unlock();
    writing.get();
    EXPECT_EQ(locked->value(), number(1));
}

TEST_F(CMValueNodeTest, ReportsOutsideItsLock)
{
    class Reader : public QObject
    {
    public:
        void on_value_changed(const CMPath &changed, const QVariant & /*value*/)
        {
            read = CMRoot()->getValue(changed);
        }
        QVariant read;
    };
    QMutex lock;
    CMValueNode *locked = CMValueNode::create(worker.nodes(), path + "locked", &lock);
    Reader reader;
    CMRoot()->connectValueChange(path + "locked", &reader, &Reader::on_value_changed);
    locked->setValue(number(1));
    settle();
    EXPECT_EQ(reader.read, carried(1));
}

TEST_F(CMValueNodeTest, IsReadCompletelyWhileItIsWritten)
{
    std::atomic<bool> done{false};
    std::vector<std::future<void>> readers;
    readers.reserve(4);
    for (int i = 0; i < 4; ++i) {
        readers.push_back(std::async(std::launch::async, [&done] {
            while (!done) {
                const TavoValue value(CMRoot()->getValue(path).toHash());
                EXPECT_EQ(value.int_(), value.string_().toInt());
            }
        }));
    }
    for (int i = 0; i < 2000; ++i) {
        node->setValue(TavoValue().setInt_(i).setString_(QString::number(i)));
    }
    done = true;
    for (auto &reader : readers) {
        reader.get();
    }
}

TEST_F(CMValueNodeTest, MayBeSetInsideAReport)
{
    class Counter : public QObject
    {
    public:
        explicit Counter(CMValueNode *counted)
            : m_node(counted)
        {
        }
        void on_value_changed(const CMPath & /*path*/, const QVariant &value)
        {
            last = TavoValue(value.toHash()).int_();
            if (last < 5) {
                m_node->setValue(number(last + 1));
            }
        }
        int last = 0;

    private:
        CMValueNode *m_node;
    };
    Counter counter(node);
    CMRoot()->connectValueChange(path, &counter, &Counter::on_value_changed);
    node->setValue(number(1));
    settle();
    EXPECT_EQ(counter.last, 5);
}
