// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/clients/CallTurns.h"

#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include <bus/BusWriter.h>

#include <gtest/gtest.h>

#include <optional>
#include <thread>

namespace {
using namespace std::chrono_literals;

ClientLimits limits()
{
    ClientLimits limits{};
    limits.valueBytes = 1 << 20;
    limits.totalRequestBytes = 1 << 20;
    return limits;
}

class CallTurnsTest : public testing::Test
{
protected:
    void send(const char *method)
    {
        const std::string host = m_host.connection().uniqueName();
        const BusMessage call =
            m_client.connection().createCall(host.c_str(), "/", "org.tavo.Test", method);
        sd_bus_message_set_expect_reply(call.get(), 0);
        call.send();
    }

    /// Calls arrive as on a bus, but all that is known of them is whose they are.
    void addCalls(const char *client, int count, CallTurns::Method &method)
    {
        for (int i = 0; i < count; ++i) {
            add(client, method, {});
        }
    }

    void add(const char *client, CallTurns::Method &method, const QByteArray &argument)
    {
        const BusMessage call =
            m_host.connection().createCall("org.tavo.Test", "/", "org.tavo.Test", "Slow");
        BusWriter(call).writeVariant(argument);
        call.seal();
        m_turns.add(client, call, method);
    }

    bool becomesReadable()
    {
        const auto end = std::chrono::steady_clock::now() + 5s;
        while (!m_host.connection().isReadable() && std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
        }
        return m_host.connection().isReadable();
    }

    PrivateBus m_bus;
    BusClient m_host{m_bus.address()};
    BusClient m_client{m_bus.address()};
    const ClientLimits m_limits = limits();
    Quotas m_quotas{m_limits};
    CallTurns m_turns{m_host.connection(), m_quotas, m_limits,
                      [](const std::string &) { return true; }};
};

TEST_F(CallTurnsTest, EndWhenMoreArrives)
{
    constexpr int calls = 10;
    int handled = 0;
    std::optional<int> handledBefore;
    CallTurns::Method slow{CallTurns::Effect::Reply, [&](const BusMessage &) {
                               if (++handled == 1) {
                                   send("Next");
                                   EXPECT_TRUE(becomesReadable());
                               }
                               std::this_thread::sleep_for(1ms);
                           }};
    const BusSlot slot = m_host.connection().handleCalls([&](const BusMessage &call) {
        if (call.member() == "First") {
            addCalls("busy", calls, slow);
        } else {
            handledBefore = handled;
        }
    });
    send("First");
    EXPECT_TRUE(waitFor([&] { return handled == calls; }));
    EXPECT_EQ(handledBefore, 1);
}

TEST_F(CallTurnsTest, RefuseFurtherCallsOfAClientUntilThoseThatWaitAreHandled)
{
    int handled = 0;
    CallTurns::Method method{CallTurns::Effect::Reply, [&](const BusMessage &) { ++handled; }};
    const BusSlot slot = m_host.connection().handleCalls([&](const BusMessage &call) {
        if (call.member() == "First") {
            addCalls("busy", 2, method);
            EXPECT_THROW(add("busy", method, QByteArray(1 << 20, 'x')), BusError);
            EXPECT_THROW(add("busy", method, {}), BusError);
            EXPECT_NO_THROW(add("other", method, {}));
        } else {
            addCalls("busy", 2, method);
        }
    });
    send("First");
    ASSERT_TRUE(waitFor([&] { return handled == 3; }));
    send("Next");
    EXPECT_TRUE(waitFor([&] { return handled == 5; }));
}
} // namespace
