// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A bus that reads little in a long time, because others keep it busy.

#include "module/dbus/ModelTest.h"

#include <QDeadlineTimer>

#include <thread>

namespace {
using testing::ElementsAre;
using testing::HasSubstr;
using namespace std::chrono_literals;

class DbusBusyBusTest : public ModelTest
{
protected:
    DbusBusyBusTest()
    {
        m_large = publishValue("/test/large"_s, 0);
        publishValue("/test/small"_s, 5);
    }

    void setLarge(QChar character)
    {
        constexpr int size = 100000;
        m_large->setValue(TavoValue().setString_(QString(size, character)));
    }

    /// Lets the bus do what it can, but only every now and then, until the condition holds. Module and
    /// client run in this thread, so they send nothing while the bus reads.
    template <typename Condition>
    bool waitWhileBusy(Condition condition)
    {
        constexpr auto turn = 60ms;
        constexpr auto reading = 3ms;
        QDeadlineTimer deadline(20s);
        while (!condition() && !deadline.hasExpired()) {
            bus().pause();
            waitFor([] { return false; }, turn);
            bus().resume();
            std::this_thread::sleep_for(reading);
        }
        return condition();
    }

private:
    CMValueNode *m_large;
};

TEST_F(DbusBusyBusTest, GetsSmallRepliesInsteadOfLargeOnes)
{
    setLarge('x');
    ModelClient other(bus().address());
    const BusCall large = client->getValue("/test/large"_s);
    const BusCall small = other.getValue("/test/small"_s);
    ASSERT_TRUE(waitWhileBusy([&] { return small.isAnswered(); }));
    EXPECT_TRUE(small.succeeds());
    EXPECT_FALSE(large.isAnswered());
    ASSERT_TRUE(waitWhileBusy([&] { return large.isAnswered(); }));
    EXPECT_EQ(large.errorName(), limitsExceeded);
    EXPECT_THAT(large.errorMessage(), HasSubstr("too busy"));
    EXPECT_TRUE(client->getValue("/test/large"_s).succeeds());
}

TEST_F(DbusBusyBusTest, GetsNoLargeSignalsAndIsTold)
{
    ASSERT_TRUE(client->subscribe("/test/large"_s, "value"_s).succeeds());
    setLarge('x');
    ASSERT_TRUE(waitWhileBusy([&] { return !client->received.empty(); }));
    EXPECT_THAT(client->received, ElementsAre("Dropped /test/large 1"));
    setLarge('y');
    ASSERT_TRUE(client->waitForSignals(2));
    EXPECT_THAT(client->received.back(), HasSubstr("yyy"));
}
} // namespace
