// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"

#include <utility>

namespace {

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

    /// The number of refusals among this many calls at once.
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

TEST_F(DbusLimitsTest, HoldForThePathsThatAreDescribedAtOnce)
{
    // A string counts 32 bytes besides its own.
    QStringList paths;
    for (int i = 0; i < 50; ++i) {
        paths.append("/test/ab"_s);
    }
    EXPECT_TRUE(client->describe(paths).succeeds());
    const BusCall call = client->describe(paths << "/"_s);
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

TEST_F(DbusLimitsTest, HoldForRequestsAtOnceOfEachClientSeparately)
{
    // The requests of two seconds are accepted at once, and some more while they are being sent.
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

TEST_F(DbusNoLimitTest, OfZeroRequestsPerSecondIsNoLimit)
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

class DbusRequestBytesTest : public ModelTest
{
protected:
    DbusRequestBytesTest()
        : ModelTest({{"limits", QVariantHash{{"totalRequestBytes", 1 << 20}}}})
    {
        publishRequest("/test/late"_s, [this](const CMSetDataRequest &request) {
            m_waiting.push_back(request.reply());
        });
    }

    BusCall send(ModelClient &by, std::size_t number)
    {
        const BusCall call = by.send("/test/late"_s, QByteArray(300'000, 'x'));
        waitFor([&] { return call.isAnswered() || m_waiting.size() == number; });
        return call;
    }
    void answerAll()
    {
        for (const CMReply<QVariant> &reply : std::exchange(m_waiting, {})) {
            reply.setValue({});
        }
    }

private:
    std::vector<CMReply<QVariant>> m_waiting;
};

TEST_F(DbusRequestBytesTest, AreLimitedUntilTheRepliesAndLeaveRoomForOthers)
{
    const BusCall first = send(*client, 1);
    EXPECT_FALSE(first.isAnswered());
    const BusCall second = send(*client, 2);
    EXPECT_EQ(second.errorName(), limitsExceeded);
    EXPECT_EQ(second.errorMessage(), "All clients together may have no more than 1048576 bytes "
                                     "of requests that wait for their replies");
    ModelClient other(bus().address());
    const BusCall others = send(other, 2);
    EXPECT_FALSE(others.isAnswered());
    answerAll();
    EXPECT_TRUE(first.succeeds());
    EXPECT_TRUE(others.succeeds());
    EXPECT_FALSE(send(*client, 1).isAnswered());
}

TEST_F(DbusRequestBytesTest, OfAClientThatHasLeftDoNotCount)
{
    ModelClient leaving(bus().address());
    EXPECT_FALSE(send(leaving, 1).isAnswered());
    EXPECT_FALSE(send(*client, 2).isAnswered());
    ModelClient other(bus().address());
    EXPECT_EQ(send(other, 3).errorName(), limitsExceeded);
    leaving.leave();
    EXPECT_TRUE(waitFor([&] { return !send(other, 3).isAnswered(); }));
}
} // namespace
