// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/EventLoop.h"

#include <QPointer>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

using namespace std::chrono_literals;

TEST(WaitForTest, ReturnsAtOnceWhenThePredicateHoldsAlready)
{
    EXPECT_TRUE(waitFor([] { return true; }, 0ms));
}

TEST(WaitForTest, RunsTheEventLoopUntilThePredicateHolds)
{
    bool fired = false;
    QTimer::singleShot(1ms, [&fired] { fired = true; });
    EXPECT_TRUE(waitFor([&fired] { return fired; }));
}

TEST(WaitForTest, NoticesWhatAnotherThreadDidWithoutAnEvent)
{
    std::atomic<bool> done{false};
    std::thread other([&done] { done = true; });
    EXPECT_TRUE(waitFor([&done] { return done.load(); }));
    other.join();
}

TEST(WaitForTest, GivesUpAtTheLimit)
{
    EXPECT_FALSE(waitFor([] { return false; }, 1ms));
}

TEST(WaitForTest, DeletesWhatIsToBeDeletedLater)
{
    QPointer<QObject> object = new QObject;
    object->deleteLater();
    EXPECT_TRUE(waitFor([&object] { return object.isNull(); }));
}

TEST(SettleTest, HandlesEventsThatEventsCause)
{
    int calls = 0;
    QObject context;
    const std::function<void()> chain = [&] {
        if (++calls < 3) {
            QMetaObject::invokeMethod(&context, chain, Qt::QueuedConnection);
        }
    };
    QMetaObject::invokeMethod(&context, chain, Qt::QueuedConnection);
    settle();
    EXPECT_EQ(calls, 3);
}

TEST(SettleTest, DoesNotWaitForWhatIsYetToCome)
{
    bool fired = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&fired] { fired = true; });
    timer.start(1h);
    settle();
    EXPECT_FALSE(fired);
}
