// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/Text.h"
#include "support/TimeOf.h"

#include <gtest/gtest.h>

namespace {
/// More than the socket to a bus takes at once.
constexpr int manyMessages = 32;
constexpr int messageBytes = 1 << 20;

class BusFlushTest : public testing::Test
{
protected:
    BusFlushTest()
    {
        m_receiver.listen("type='signal',interface='org.freedesktop.Notifications'",
                          [this](const BusMessage &) { ++m_received; });
        // Receives once the rule is there.
        send(1);
        EXPECT_TRUE(receives(1));
    }

    void send(int count, int bytes = messageBytes)
    {
        const QString text(bytes, 'x');
        for (int i = 0; i < count; ++i) {
            m_sender.sendSignal(BusInterface::notifications(), "ActionInvoked", m_receiver.name(),
                                [&text](BusWriter &writer) {
                                    writer.writeUInt32(1);
                                    writer.writeString(text);
                                });
        }
    }
    bool receives(int count)
    {
        return waitFor([this, count] { return m_received >= count; }, std::chrono::seconds(20));
    }

    PrivateBus m_bus;
    BusClient m_sender{m_bus.address()};

private:
    BusClient m_receiver{m_bus.address()};
    int m_received = 0;
};

TEST_F(BusFlushTest, LosesNothingThatWasSentBeforeTheEnd)
{
    m_bus.pause();
    send(manyMessages);
    m_bus.resume();
    m_sender.connection().flush(std::chrono::seconds(20));
    m_sender.leave();
    EXPECT_TRUE(receives(1 + manyMessages));
}

TEST_F(BusFlushTest, TakesNoLongerThanItsTimeoutWhenTheBusHangs)
{
    m_bus.pause();
    send(manyMessages);
    constexpr std::chrono::milliseconds timeout(100);
    constexpr int blockedMs = 5000;
    const qint64 elapsed = timeOf([this, timeout] { m_sender.connection().flush(timeout); });
    m_bus.resume();
    EXPECT_GE(elapsed, timeout.count());
    EXPECT_LT(elapsed, blockedMs);
}

TEST_F(BusFlushTest, DoesNotWaitWhenNothingIsUnsent)
{
    m_bus.pause();
    constexpr int blockedMs = 5000;
    EXPECT_LT(timeOf([this] { m_sender.connection().flush(std::chrono::seconds(20)); }), blockedMs);
    m_bus.resume();
}
} // namespace
