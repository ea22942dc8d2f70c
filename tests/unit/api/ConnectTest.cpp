// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ConnectTest.h"

#include "core/base/connect.h"
#include "support/EventLoop.h"
#include "support/EventThread.h"

#include <gtest/gtest.h>

namespace {
class Listener : public QObject
{
public:
    void hear(int number) { heard += number; }
    void hearUnknown(const UnknownToTheMetaTypes & /*value*/) { ++heard; }
    void hearPointer(UnknownToTheMetaTypes * /*value*/) { ++heard; }

    int heard = 0;
};
} // namespace

TEST(ConnectTest, ConnectsASignalToASlot)
{
    Speaker speaker;
    Listener listener;
    EXPECT_TRUE(tavoConnect(&speaker, &Speaker::number, &listener, &Listener::hear));
    Q_EMIT speaker.number(5);
    EXPECT_EQ(listener.heard, 5);
}

TEST(ConnectTest, KeepsTheConnectionType)
{
    Speaker speaker;
    Listener listener;
    tavoConnect(&speaker, &Speaker::number, &listener, &Listener::hear, Qt::QueuedConnection);
    Q_EMIT speaker.number(5);
    EXPECT_EQ(listener.heard, 0);
    settle();
    EXPECT_EQ(listener.heard, 5);
}

TEST(ConnectTest, ConnectsDirectlyWhateverTheArgumentsAre)
{
    Speaker speaker;
    Listener listener;
    tavoConnect(&speaker, &Speaker::unknown, &listener, &Listener::hearUnknown);
    Q_EMIT speaker.unknown({});
    EXPECT_EQ(listener.heard, 1);
}

TEST(ConnectTest, AcceptsAPointerToAnUnknownType)
{
    Speaker speaker;
    Listener listener;
    EXPECT_TRUE(verifyConnectionSignalParameters(&speaker, &Speaker::pointer, &listener,
                                                 Qt::QueuedConnection));
}

TEST(ConnectTest, ChecksTheArgumentsWhenTheCallMayBeQueued)
{
    Speaker speaker;
    Listener listener;
    const auto allowed = [&](Qt::ConnectionType type) {
        return verifyConnectionSignalParameters(&speaker, &Speaker::unknown, &listener, type);
    };
    EXPECT_TRUE(allowed(Qt::DirectConnection));
    EXPECT_TRUE(allowed(Qt::AutoConnection));
    EXPECT_FALSE(allowed(Qt::QueuedConnection));
    EXPECT_FALSE(allowed(Qt::BlockingQueuedConnection));
    EventThread other;
    listener.moveToThread(other.thread());
    EXPECT_FALSE(allowed(Qt::AutoConnection));
}

TEST(ConnectDeathTest, RefusesToQueueArgumentsOfUnknownTypes)
{
    Speaker speaker;
    Listener listener;
    EXPECT_DEATH(tavoConnect(&speaker, &Speaker::unknown, &listener, &Listener::hearUnknown,
                             Qt::QueuedConnection),
                 "verifyConnectionSignalParameters\\(sender, signal, receiver, type\\)");
}

TEST(ConnectDeathTest, RefusesAConnectionThatCannotBeMade)
{
    Listener listener;
    const auto unique = Qt::ConnectionType(Qt::UniqueConnection | Qt::DirectConnection);
    Speaker speaker;
    tavoConnect(&speaker, &Speaker::number, &listener, &Listener::hear, unique);
    EXPECT_DEATH(tavoConnect(&speaker, &Speaker::number, &listener, &Listener::hear, unique),
                 "\"connection\"");
}
