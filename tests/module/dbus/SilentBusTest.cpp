// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The module on buses that accept connections and messages but never reply.

#include "support/bus/SilentBus.h"

#include "ModelTest.h"
#include "support/TimeOf.h"

namespace {
/// Only something that waits for the bus takes this long.
constexpr int blockedMs = 1000;

constexpr std::chrono::seconds timeout(20);

/// More messages than the socket's buffer holds.
constexpr int manyMessages = 5000;

void runLoop()
{
    waitFor([] { return false; }, std::chrono::milliseconds(100));
}

class DbusSilentBusTest : public DbusTest
{
protected:
    bool waitForLog(const std::string &text)
    {
        return waitFor([&] { return !log().find(text).empty(); }, timeout);
    }
};

TEST_F(DbusSilentBusTest, BlocksNeitherTheThreadNorTheEnd)
{
    for (const auto after : {SilentBus::After::Connecting, SilentBus::After::Authenticating,
                             SilentBus::After::Greeting}) {
        const SilentBus silent(after);
        const auto load = [&silent] {
            const LoadedModule module(MODULE_FILE, "dbus", {{"bus", silent.address()}});
            runLoop();
        };
        EXPECT_LT(timeOf(load), blockedMs);
        EXPECT_EQ(silent.connections(), 1);
    }
}

TEST_F(DbusSilentBusTest, IsReportedOnceWithTheReason)
{
    const SilentBus silent(SilentBus::After::Greeting);
    const LoadedModule module(MODULE_FILE, "dbus", {{"bus", silent.address()}});
    ASSERT_TRUE(waitForLog("does not answer"));
    ASSERT_TRUE(waitFor([&] { return silent.connections() > 1; }, timeout));
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 1);
    EXPECT_EQ(log().count("Connected"), 0);
}

TEST_F(DbusSilentBusTest, IsServedWhenItGoesOn)
{
    bus().pause();
    load();
    ASSERT_TRUE(waitForLog("does not answer"));
    bus().resume();
    EXPECT_TRUE(isServing());
}

class DbusPausedBusTest : public ModelTest
{
};

TEST_F(DbusPausedBusTest, GoesOnWithCallsSubscriptionsAndReplies)
{
    publishEcho("/test/echo"_s);
    CMValueNode *node = publishValue("/test/value"_s, 0);
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    const BusCall before = client->send("/test/echo"_s, 1);
    bus().pause();
    const BusCall during = client->send("/test/echo"_s, 2);
    node->setValue(TavoValue().setInt_(1));
    runLoop();
    EXPECT_FALSE(during.isAnswered());
    bus().resume();
    EXPECT_TRUE(before.succeeds());
    EXPECT_TRUE(during.succeeds());
    EXPECT_TRUE(client->waitForSignals(1));
    EXPECT_TRUE(client->send("/test/echo"_s, 3).succeeds());
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 0);
}

TEST_F(DbusPausedBusTest, LosesNoChangeMeanwhile)
{
    CMValueNode *node = publishValue("/test/value"_s, 0);
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    bus().pause();
    constexpr int changes = manyMessages;
    const auto change = [node] {
        for (int i = 1; i <= changes; ++i) {
            node->setValue(TavoValue().setInt_(i));
        }
        settle();
    };
    EXPECT_LT(timeOf(change), blockedMs);
    bus().resume();
    EXPECT_TRUE(waitFor([&] { return client->received.size() >= changes; }, timeout));
    EXPECT_EQ(client->received.back(), "ValueChanged /test/value {int: 5000}");
}

TEST_F(DbusPausedBusTest, DoesNotDelayTheEndWithUnsentMessages)
{
    CMValueNode *node = publishValue("/test/value"_s, 0);
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    bus().pause();
    for (int i = 1; i <= manyMessages; ++i) {
        node->setValue(TavoValue().setInt_(i));
    }
    settle();
    EXPECT_LT(timeOf([this] { unload(); }), blockedMs);
}
} // namespace
