// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

class DbusChangesTest : public ModelTest
{
protected:
    /// Waits until everything that was sent to the client has arrived.
    bool catchUp() { return client->getValue("/test/none"_s).waitForAnswer(); }

    static bool isHeard(const QString &path)
    {
        return CMSubscribe::raiseRowsChange(CMPath(path), {"probe"_s}) > 0;
    }
};

TEST_F(DbusChangesTest, OfAValueAreSentWithIt)
{
    CMValueNode *node = publishValue("/test/value"_s, 1);
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    node->setValue(TavoValue().setInt_(2));
    node->setValue(TavoValue().setInt_(3));
    EXPECT_TRUE(client->waitForSignals(2));
    EXPECT_THAT(client->received, ElementsAre("ValueChanged /test/value {int: 2}",
                                              "ValueChanged /test/value {int: 3}"));
}

TEST_F(DbusChangesTest, OfRowsAreSentWithTheirPlace)
{
    CMListRowsNode *node = publishRows("/test/rows"_s, {"/a"_s});
    ASSERT_TRUE(client->subscribe("/test/rows"_s, "rows"_s).succeeds());
    node->rowsAppend(CMPath("/b"_s));
    node->rowsRemoveAt(0);
    EXPECT_TRUE(client->waitForSignals(2));
    EXPECT_THAT(client->received, ElementsAre("RowsChanged /test/rows inserted 1+1",
                                              "RowsChanged /test/rows removed 0+1"));
}

TEST_F(DbusChangesTest, OfANodeAreSentWhenItComesAndGoes)
{
    ASSERT_TRUE(client->subscribe("/test/value"_s, "node"_s).succeeds());
    publishValue("/test/value"_s, 1)->dispose();
    EXPECT_TRUE(client->waitForSignals(2));
    EXPECT_THAT(client->received,
                ElementsAre("NodeChanged /test/value published", "NodeChanged /test/value gone"));
}

TEST_F(DbusChangesTest, AreSentOnceAfterSubscribingTwice)
{
    CMValueNode *node = publishValue("/test/value"_s, 1);
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    node->setValue(TavoValue().setInt_(2));
    EXPECT_TRUE(client->waitForSignals(1));
    EXPECT_TRUE(catchUp());
    EXPECT_EQ(client->received.size(), 1U);
}

TEST_F(DbusChangesTest, AreSentOnlyToSubscribers)
{
    CMValueNode *node = publishValue("/test/value"_s, 1);
    ModelClient other(bus().address());
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    node->setValue(TavoValue().setInt_(2));
    EXPECT_TRUE(client->waitForSignals(1));
    EXPECT_TRUE(other.getValue("/test/value"_s).succeeds());
    EXPECT_THAT(other.received, IsEmpty());
}

TEST_F(DbusChangesTest, AreSentToEachSubscriber)
{
    CMValueNode *node = publishValue("/test/value"_s, 1);
    ModelClient other(bus().address());
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    ASSERT_TRUE(other.subscribe("/test/value"_s, "value"_s).succeeds());
    ASSERT_TRUE(client->unsubscribe("/test/value"_s, "value"_s).succeeds());
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    node->setValue(TavoValue().setInt_(2));
    EXPECT_TRUE(client->waitForSignals(1));
    EXPECT_TRUE(other.waitForSignals(1));
}

TEST_F(DbusChangesTest, EndWithUnsubscribing)
{
    ASSERT_TRUE(client->subscribe("/test/rows"_s, "rows"_s).succeeds());
    ASSERT_TRUE(client->unsubscribe("/test/rows"_s, "rows"_s).succeeds());
    EXPECT_FALSE(isHeard("/test/rows"_s));
}

TEST_F(DbusChangesTest, CanNotBeUnsubscribedWithoutASubscription)
{
    const char *invalid = "org.freedesktop.DBus.Error.InvalidArgs";
    EXPECT_EQ(client->unsubscribe("/test/rows"_s, "rows"_s).errorName(), invalid);
    ASSERT_TRUE(client->subscribe("/test/rows"_s, "rows"_s).succeeds());
    EXPECT_EQ(client->unsubscribe("/test/rows"_s, "value"_s).errorName(), invalid);
}

TEST_F(DbusChangesTest, OfAnUnknownKindAreRefused)
{
    const BusCall call = client->subscribe("/test/rows"_s, "Rows"_s);
    EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(call.errorMessage(), "A change must be \"value\", \"rows\" or \"node\"");
}

TEST_F(DbusChangesTest, EndWhenTheClientLeaves)
{
    for (const char *change : {"value", "rows", "node"}) {
        ASSERT_TRUE(client->subscribe("/test/rows"_s, QLatin1String(change)).succeeds());
    }
    ASSERT_TRUE(isHeard("/test/rows"_s));
    client->leave();
    EXPECT_TRUE(waitFor([] { return !isHeard("/test/rows"_s); }));
}

TEST_F(DbusChangesTest, EndWhenTheBusGoes)
{
    ASSERT_TRUE(client->subscribe("/test/rows"_s, "rows"_s).succeeds());
    bus().stop();
    EXPECT_TRUE(waitFor([] { return !isHeard("/test/rows"_s); }));
}
} // namespace
