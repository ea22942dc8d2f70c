// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// ThreadSanitizer must find races between slots, and no races in what Qt orders.

#include "support/EventThread.h"

#include <QMutex>
#include <QObject>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {
constexpr int reported = 66; // the sanitizer's exit code

/// Two slots in two threads with nothing to order them, not even a future.
void race()
{
    QThread one;
    QThread other;
    QObject first;
    QObject second;
    first.moveToThread(&one);
    second.moveToThread(&other);
    int shared = 0;
    std::atomic<int> done{0};
    const auto add = [&] {
        ++shared;
        done.fetch_add(1, std::memory_order_relaxed);
    };
    QMetaObject::invokeMethod(&first, add, Qt::QueuedConnection);
    QMetaObject::invokeMethod(&second, add, Qt::QueuedConnection);
    for (QThread *thread : {&one, &other}) {
        thread->start();
    }
    while (done.load(std::memory_order_relaxed) < 2) {
        QThread::yieldCurrentThread();
    }
    for (QThread *thread : {&one, &other}) {
        thread->quit();
        thread->wait();
    }
}

class Sender : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void sent(int value);
};
} // namespace

TEST(QtOrderDeathTest, ARaceInASlotIsReported)
{
    EXPECT_EXIT(race(), testing::ExitedWithCode(reported), "data race");
}

TEST(QtOrderTest, AQueuedCallComesAfterWhatWasDoneBefore)
{
    EventThread thread;
    int shared = 1;
    thread.run([&shared] { EXPECT_EQ(++shared, 2); });
    EXPECT_EQ(shared, 2);
}

TEST(QtOrderTest, AQueuedSignalComesAfterWhatWasDoneBefore)
{
    EventThread thread;
    QObject *receiver = thread.run([] { return new QObject; });
    Sender sender;
    std::vector<int> seen;
    QObject::connect(&sender, &Sender::sent, receiver,
                     [&seen](int value) { seen.push_back(value); });
    seen.push_back(1);
    Q_EMIT sender.sent(2);
    thread.run([receiver] { delete receiver; });
    EXPECT_EQ(seen, (std::vector<int>{1, 2}));
}

TEST(QtOrderTest, WhatAMutexGuardsIsOrdered)
{
    EventThread thread;
    QMutex mutex;
    int shared = 0;
    const auto add = [&] {
        const QMutexLocker lock(&mutex);
        ++shared;
    };
    auto done = thread.start(add);
    add();
    done.wait();
    const QMutexLocker lock(&mutex);
    EXPECT_EQ(shared, 2);
}

#include "QtOrderTest.moc"
