// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Recorders.h"
#include "support/EventLoop.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <vector>

using namespace std::chrono_literals;
using Reply = CMReply<QVariant>;

namespace {
constexpr unsigned long noLimit = std::numeric_limits<unsigned long>::max();
} // namespace

TEST(CMReplyTest, IsNewAndUnfinishedByDefault)
{
    const Reply reply;
    EXPECT_FALSE(!reply);
    EXPECT_FALSE(reply.isFinished());
    EXPECT_FALSE(reply.error().isError());
    EXPECT_NE(reply, Reply());
}

TEST(CMReplyTest, IsFinishedByAValue)
{
    const Reply reply;
    reply.setValue(5);
    EXPECT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.value(), QVariant(5));
    EXPECT_FALSE(reply.error().isError());
}

TEST(CMReplyTest, IsFinishedByAnError)
{
    const Reply reply;
    reply.setError(broken);
    EXPECT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.error(), broken);
    EXPECT_FALSE(reply.value().isValid());
}

TEST(CMReplyTest, TakesItsFirstAnswerOnly)
{
    const Reply answered;
    answered.setValue(1);
    answered.setValue(2);
    answered.setError(broken);
    EXPECT_EQ(answered.value(), QVariant(1));
    EXPECT_FALSE(answered.error().isError());

    const Reply failed;
    failed.setError(broken);
    failed.setValue(1);
    failed.setError(CMError(QStringLiteral("Other"), "other"));
    EXPECT_EQ(failed.error(), broken);
    EXPECT_FALSE(failed.value().isValid());
}

TEST(CMReplyTest, SharesItsAnswerWithItsCopies)
{
    const Reply reply;
    Reply copy;
    copy = reply;
    const CMVoidReply view(copy);
    copy.setValue(5);
    EXPECT_EQ(reply.value(), QVariant(5));
    EXPECT_TRUE(view.isFinished());
}

TEST(CMReplyTest, CarriesOtherTypesToo)
{
    const CMReply<QString> reply;
    reply.setValue(QStringLiteral("text"));
    EXPECT_EQ(reply.value(), "text");
}

TEST(CMReplyTest, WaitsNoLongerThanTheTimeout)
{
    EXPECT_FALSE(Reply().waitForFinished(0));
    EXPECT_FALSE(Reply().waitForFinished(1));
}

TEST(CMReplyTest, WaitsForATimeoutOfLessThanASecond)
{
    QElapsedTimer time;
    time.start();
    EXPECT_FALSE(Reply().waitForFinished(200));
    EXPECT_GE(time.elapsed(), 200);
    EXPECT_LT(time.elapsed(), 20000) << "the timeout was taken for seconds";
}

TEST(CMReplyTest, DoesNotWaitOnceFinished)
{
    const Reply reply;
    reply.setValue(1);
    EXPECT_TRUE(reply.waitForFinished(0));
    EXPECT_TRUE(reply.waitForFinished());
}

TEST(CMReplyTest, WakesAllWaitingThreads)
{
    const Reply reply;
    std::vector<std::future<bool>> waiting;
    for (const unsigned long limit : {60000UL, noLimit, noLimit}) {
        waiting.push_back(
            std::async(std::launch::async, [=] { return reply.waitForFinished(limit); }));
    }
    auto reading = std::async(std::launch::async, [=] { return reply.value(); });
    reply.setValue(7);
    for (auto &each : waiting) {
        EXPECT_TRUE(each.get());
    }
    EXPECT_EQ(reading.get(), QVariant(7));
}

TEST(CMReplyTest, WaitsWithAVeryLongTimeout)
{
    for (const unsigned long limit : {noLimit - 1, noLimit / 2, noLimit / 1000000}) {
        const Reply reply;
        std::promise<void> started;
        auto waiting = std::async(std::launch::async, [&] {
            started.set_value();
            return reply.waitForFinished(limit);
        });
        started.get_future().wait();
        EXPECT_EQ(waiting.wait_for(20ms), std::future_status::timeout) << limit;
        reply.setValue(1);
        EXPECT_TRUE(waiting.get());
    }
}

TEST(CMReplyTest, ReturnsItsValueOnlyOnceItIsFinished)
{
    const Reply reply;
    auto reading = std::async(std::launch::async, [=] { return reply.value(); });
    EXPECT_EQ(reading.wait_for(20ms), std::future_status::timeout);
    reply.setValue(7);
    EXPECT_EQ(reading.get(), QVariant(7));
}

TEST(CMReplyTest, TakesOneAnswerFromManyThreads)
{
    for (int round = 0; round < 50; ++round) {
        const Reply reply;
        std::atomic<int> told{0};
        QObject context;
        reply.addWatcher(
            &context, [&told](const CMVoidReply &) { ++told; }, Qt::DirectConnection);
        std::vector<std::future<void>> answering;
        answering.reserve(8);
        for (int i = 0; i < 8; ++i) {
            answering.push_back(std::async(std::launch::async, [=] { reply.setValue(i); }));
        }
        const QVariant first = reply.value();
        for (auto &each : answering) {
            each.get();
        }
        EXPECT_EQ(reply.value(), first);
        EXPECT_EQ(told, 1);
    }
}

TEST(CMVoidReplyTest, IsEmptyByDefault)
{
    const CMVoidReply nothing;
    EXPECT_TRUE(!nothing);
    EXPECT_FALSE(nothing.isFinished());
    EXPECT_FALSE(nothing.waitForFinished());
    EXPECT_FALSE(nothing.error().isError());
    nothing.setError(broken);
    EXPECT_FALSE(nothing.error().isError());
}

TEST(CMVoidReplyTest, FinishesTheReplyThatItViews)
{
    const Reply reply;
    CMVoidReply(reply).setError(broken);
    EXPECT_EQ(reply.error(), broken);
}

TEST(CMVoidReplyTest, CanBeViewedAsAReplyOfItsTypeOnly)
{
    const Reply reply;
    EXPECT_FALSE(!Reply(CMVoidReply(reply)));
    EXPECT_TRUE(!CMReply<int>(CMVoidReply(reply)));
    EXPECT_TRUE(!Reply(CMVoidReply()));
}
