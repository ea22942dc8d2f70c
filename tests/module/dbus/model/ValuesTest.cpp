// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"
#include "support/EventThread.h"

namespace {
using testing::HasSubstr;

using DbusValuesTest = ModelTest;

TEST_F(DbusValuesTest, AreReadAsTheNodeHoldsThem)
{
    publishValue("/test/value"_s, 5);
    EXPECT_EQ(client->getValue("/test/value"_s).variant(), QVariant(QVariantHash{{"int", 5}}));
}

TEST_F(DbusValuesTest, OfAMissingNodeAreAnErrorThatNamesIt)
{
    const BusCall call = client->getValue("/test/nothing"_s);
    EXPECT_EQ(call.errorName(), "org.tavo.Error.NoSuchNode");
    EXPECT_EQ(call.errorMessage(), "There is no node at /test/nothing");
}

TEST_F(DbusValuesTest, OfANodeWithoutAValueAreAnError)
{
    publishRows("/test/rows"_s, {});
    EXPECT_EQ(client->getValue("/test/rows"_s).errorName(), "org.tavo.Error.NotSupported");
}

TEST_F(DbusValuesTest, AreRefusedWhenTheirPathIsNotCanonical)
{
    publishValue("/test/value"_s, 5);
    for (const QString &path : {"test/value"_s, "/test//value"_s, "/test/value/"_s, "/"_s, ""_s}) {
        const BusCall call = client->getValue(path);
        EXPECT_EQ(call.errorName(), "org.tavo.Error.InvalidPath") << path.toStdString();
        EXPECT_THAT(call.errorMessage(), HasSubstr("is not a path"));
    }
    EXPECT_EQ(client->getValue('/' + QString(5000, 'x')).errorName(), "org.tavo.Error.InvalidPath");
}

TEST_F(DbusValuesTest, ReachANodeAndItsReplyComesBack)
{
    publishEcho("/test/echo"_s);
    const QVariantHash value{{"text", "ü"},
                             {"list", QVariantList{1, qlonglong(1) << 40, QByteArray("\0x", 2)}},
                             {"nothing", QVariant()}};
    EXPECT_EQ(client->send("/test/echo"_s, value).variant(), QVariant(value));
}

TEST_F(DbusValuesTest, AsLargeAsAPictureAndATextAreSentBothWays)
{
    publishEcho("/test/echo"_s);
    const int size = 390'000;
    const QVariant text = QString(size, 'x');
    EXPECT_EQ(client->send("/test/echo"_s, text).variant(), text);
    const QVariant bytes = QByteArray(size, '\xff');
    EXPECT_EQ(client->send("/test/echo"_s, bytes).variant(), bytes);
}

TEST_F(DbusValuesTest, ThatKeepOthersWaitingAreNotSent)
{
    const QString large(400'000, 'x');
    publishValue("/test/value"_s, 5)->setValue(TavoValue().setString_(large));
    publishEcho("/test/echo"_s);
    EXPECT_EQ(client->getValue("/test/value"_s).errorName(), "org.tavo.Error.UnsupportedValue");
    EXPECT_EQ(client->send("/test/echo"_s, large).errorName(), "org.tavo.Error.UnsupportedValue");
    const QString inbox = client->ask("OpenInbox").text();
    const BusCall request = client->send(inbox, large);
    EXPECT_EQ(request.errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_EQ(request.errorMessage(), "A request to an inbox may have no more than 393216 bytes");
}

TEST_F(DbusValuesTest, ThatKeepOthersWaitingAreToldAsDropped)
{
    CMValueNode *node = publishValue("/test/value"_s, 5);
    ASSERT_TRUE(client->subscribe("/test/value"_s, "value"_s).succeeds());
    node->setValue(TavoValue().setString_(QString(400'000, 'x')));
    ASSERT_TRUE(client->waitForSignals(1));
    EXPECT_THAT(client->received.front(), testing::StartsWith("Dropped /test/value"));
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 1);
}

class DbusLargeValuesTest : public ModelTest
{
protected:
    DbusLargeValuesTest()
        : ModelTest(withLargeMessages())
    {
    }
};

TEST_F(DbusLargeValuesTest, OfAMegabyteAreSentBothWays)
{
    publishEcho("/test/echo"_s);
    const QVariant text = QString(1 << 20, 'x');
    EXPECT_EQ(client->send("/test/echo"_s, text).variant(), text);
    const QVariant bytes = QByteArray(1 << 20, '\xff');
    EXPECT_EQ(client->send("/test/echo"_s, bytes).variant(), bytes);
}

TEST_F(DbusValuesTest, NestedAsDeeplyAsABusAllowsAreSentBothWays)
{
    publishEcho("/test/echo"_s);
    QVariant lists = 1;
    for (int i = 0; i < 31; ++i) {
        lists = QVariantList{lists};
    }
    QVariant records = 1;
    for (int i = 0; i < 21; ++i) {
        records = QVariantHash{{"in", records}};
    }
    EXPECT_EQ(client->send("/test/echo"_s, lists).variant(), lists);
    EXPECT_EQ(client->send("/test/echo"_s, records).variant(), records);
}

TEST_F(DbusValuesTest, ThatAReplyCanNotHoldAreUnsupported)
{
    publishRequest("/test/deep"_s, [](const CMSetDataRequest &request) {
        QVariant value = 1;
        for (int i = 0; i < 100; ++i) {
            value = QVariantList{value};
        }
        request.reply().setValue(value);
    });
    EXPECT_EQ(client->send("/test/deep"_s, 1).errorName(), "org.tavo.Error.UnsupportedValue");
}

TEST_F(DbusValuesTest, AreAnsweredWhenTheModuleRepliesAndDelayNobodyElse)
{
    publishEcho("/test/echo"_s);
    CMReply<QVariant> late;
    publishRequest("/test/late"_s,
                   [&late](const CMSetDataRequest &request) { late = request.reply(); });
    const BusCall first = client->send("/test/late"_s, 1);
    EXPECT_EQ(client->send("/test/echo"_s, 2).variant(), QVariant(2));
    EXPECT_FALSE(first.isAnswered());
    late.setValue(3);
    EXPECT_EQ(first.variant(), QVariant(3));
}

TEST_F(DbusValuesTest, AreAnsweredFromAnyThread)
{
    EventThread other;
    publishRequest("/test/thread"_s, [&other](const CMSetDataRequest &request) {
        other.start([reply = request.reply()] { reply.setValue(4); });
    });
    EXPECT_EQ(client->send("/test/thread"_s, 1).variant(), QVariant(4));
    other.flush();
}

TEST_F(DbusValuesTest, ThatNobodyAnswersAreAnError)
{
    publishRequest("/test/dropped"_s, [](const CMSetDataRequest &) {});
    EXPECT_EQ(client->send("/test/dropped"_s, 1).errorName(), "org.tavo.Error.NoAnswer");
}

TEST_F(DbusValuesTest, ThatAModuleRefusesAreItsError)
{
    publishRequest("/test/refusing"_s, [](const CMSetDataRequest &request) {
        request.reply().setError(CMError("Test"_s, "Not like this"_s));
    });
    const BusCall call = client->send("/test/refusing"_s, 1);
    EXPECT_EQ(call.errorName(), "org.tavo.Error.Test");
    EXPECT_EQ(call.errorMessage(), "Not like this");
}

TEST_F(DbusValuesTest, AreRefusedByANodeThatTakesNoRequests)
{
    publishValue("/test/value"_s, 5);
    EXPECT_EQ(client->send("/test/value"_s, 1).errorName(), "org.tavo.Error.NotSupported");
}

TEST_F(DbusValuesTest, SentWithoutExpectingAReplyArrive)
{
    QVariant arrived;
    publishRequest("/test/keep"_s, [&arrived](const CMSetDataRequest &request) {
        arrived = request.value();
        request.reply().setValue({});
    });
    BusWriter writer(client->createCall("Call"));
    writer.writeString("/test/keep"_s);
    writer.writeVariant(7);
    ASSERT_GE(sd_bus_message_set_expect_reply(writer.message().get(), 0), 0);
    writer.message().send();
    EXPECT_TRUE(waitFor([&] { return arrived == 7; }));
    publishValue("/test/value"_s, 5);
    EXPECT_TRUE(client->getValue("/test/value"_s).succeeds());
}
} // namespace
