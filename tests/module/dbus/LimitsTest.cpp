// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelTest.h"

namespace {
constexpr const char *limitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";

class DbusLimitsTest : public ModelTest
{
protected:
    DbusLimitsTest()
        : ModelTest({{"limits", QVariantHash{{"requestsPerSecond", 100},
                                             {"valueBytes", 2000},
                                             {"subscriptions", 2},
                                             {"inboxes", 2}}}})
    {
    }

    /// How many of so many calls at once are refused.
    static int refusalsOf(ModelClient &client, int calls)
    {
        std::vector<BusCall> sent;
        for (int i = 0; i < calls; ++i) {
            sent.push_back(client.getValue("/test/none"_s));
        }
        int refused = 0;
        for (const BusCall &call : sent) {
            refused += call.errorName() == limitsExceeded ? 1 : 0;
        }
        return refused;
    }
};

TEST_F(DbusLimitsTest, HoldForTheSizeOfAValue)
{
    publishEcho("/test/echo"_s);
    EXPECT_TRUE(client->send("/test/echo"_s, QString(1900, 'x')).succeeds());
    const BusCall call = client->send("/test/echo"_s, QString(2000, 'x'));
    EXPECT_EQ(call.errorName(), limitsExceeded);
    EXPECT_EQ(call.errorMessage(), "The value is too large");
}

TEST_F(DbusLimitsTest, HoldForSubscriptionsUntilSomeEnd)
{
    ASSERT_TRUE(client->subscribe("/a"_s, "value"_s).succeeds());
    ASSERT_TRUE(client->subscribe("/a"_s, "rows"_s).succeeds());
    const BusCall call = client->subscribe("/b"_s, "value"_s);
    EXPECT_EQ(call.errorName(), limitsExceeded);
    EXPECT_EQ(call.errorMessage(), "A client may have no more than 2 subscriptions");
    ASSERT_TRUE(client->unsubscribe("/a"_s, "rows"_s).succeeds());
    EXPECT_TRUE(client->subscribe("/b"_s, "value"_s).succeeds());
}

TEST_F(DbusLimitsTest, HoldForInboxesUntilSomeEnd)
{
    const QString inbox = client->ask("OpenInbox").text();
    ASSERT_TRUE(client->ask("OpenInbox").succeeds());
    EXPECT_EQ(client->ask("OpenInbox").errorName(), limitsExceeded);
    ASSERT_TRUE(client->ask("CloseInbox", {inbox}).succeeds());
    EXPECT_TRUE(client->ask("OpenInbox").succeeds());
}

TEST_F(DbusLimitsTest, HoldForRequestsThatComeAtOnceAndForEachClientByItself)
{
    // Twice as many as a second's are taken at once, and some more while they are being sent.
    EXPECT_GT(refusalsOf(*client, 1000), 0);
    ModelClient other(bus().address());
    EXPECT_EQ(refusalsOf(other, 200), 0);
}

TEST_F(DbusLimitsTest, AreForgottenWithTime)
{
    ASSERT_GT(refusalsOf(*client, 1000), 0);
    EXPECT_TRUE(waitFor([&] {
        return client->getValue("/test/none"_s).errorName() == "org.tavo.Error.NoSuchNode";
    }));
}

class DbusNoLimitTest : public ModelTest
{
protected:
    DbusNoLimitTest()
        : ModelTest({{"limits", QVariantHash{{"requestsPerSecond", 0}}}})
    {
    }
};

TEST_F(DbusNoLimitTest, OfZeroRequestsASecondIsNone)
{
    publishValue("/test/value"_s, 1);
    std::vector<BusCall> calls;
    for (int i = 0; i < 10000; ++i) {
        calls.push_back(client->getValue("/test/value"_s));
    }
    for (const BusCall &call : calls) {
        ASSERT_TRUE(call.succeeds());
    }
}
} // namespace
