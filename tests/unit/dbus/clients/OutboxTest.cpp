// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/clients/Outbox.h"

#include "modules/dbus/clients/Quotas.h"
#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/bus/SilentClient.h"

#include <gtest/gtest.h>

#include <string>

namespace {
/// A client that receives signals without turning the event loop.
class Receiver : public SilentClient
{
public:
    using SilentClient::SilentClient;

    /// Whether the signal is among those that have come.
    bool has(const char *signal)
    {
        bool isThere = false;
        int result = 1;
        while (result > 0) {
            sd_bus_message *message = nullptr;
            result = check(sd_bus_process(m_bus, &message));
            isThere = isThere || sd_bus_message_is_signal(message, interface, signal) > 0;
            sd_bus_message_unref(message);
        }
        return isThere;
    }

    /// Waits for the signal.
    bool receives(const char *signal)
    {
        while (!has(signal)) {
            if (check(sd_bus_wait(m_bus, timeoutMicroseconds)) == 0) {
                return false;
            }
        }
        return true;
    }

    static constexpr const char *interface = "org.tavo.Test";
};

class OutboxTest : public testing::Test
{
protected:
    OutboxTest()
    {
        addClient("heavy", 1);
        addClient("light", 2);
        m_quotas.addTime("heavy", std::chrono::seconds(1));
    }

    void send(const std::string &client, const char *signal)
    {
        sd_bus_message *message = nullptr;
        const BusMessage call =
            m_sender.connection().createCall("org.tavo.Test", "/", Receiver::interface, signal);
        ASSERT_GE(sd_bus_message_new_signal(sd_bus_message_get_bus(call.get()), &message, "/",
                                            Receiver::interface, signal),
                  0);
        const BusMessage sent = BusMessage::adopt(message);
        sent.setReceiver(m_receiver.name());
        m_outbox.send(client, sent, 0);
    }
    void sendMany(const std::string &client, const char *signal)
    {
        for (int i = 0; i < many; ++i) {
            send(client, signal);
        }
    }

    /// More than the connection holds.
    static constexpr int many = 100;

    PrivateBus m_bus;
    Receiver m_receiver{m_bus.address()};

private:
    void addClient(const char *name, std::uint32_t user)
    {
        m_quotas.countRequest(name);
        m_quotas.setUser(name, user);
    }

    BusClient m_sender{m_bus.address()};
    Quotas m_quotas{ClientLimits{}};
    Outbox m_outbox{m_sender.connection(), m_quotas};
};

TEST_F(OutboxTest, SendsAtOnceToAUserOnWhomLessTimeWasSpentThanOnAllThatWait)
{
    m_bus.pause();
    sendMany("heavy", "Heavy");
    send("light", "Light");
    m_bus.resume();
    // The event loop does not turn any more.
    EXPECT_TRUE(m_receiver.receives("Light"));
}

TEST_F(OutboxTest, SendsTheRestOnceTheBusHasRead)
{
    m_bus.pause();
    sendMany("heavy", "Heavy");
    send("heavy", "Last");
    m_bus.resume();
    EXPECT_TRUE(waitFor([this] { return m_receiver.has("Last"); }, std::chrono::seconds(20)));
}
} // namespace
