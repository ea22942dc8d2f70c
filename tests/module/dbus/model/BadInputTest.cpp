// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"
#include "support/CollidingTexts.h"
#include "support/Sanitized.h"

#include <QElapsedTimer>

#include <algorithm>
#include <limits>
#include <malloc.h>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace {
using testing::HasSubstr;
using testing::Not;

constexpr const char *invalidArguments = "org.freedesktop.DBus.Error.InvalidArgs";

/// A node whose requests all throw.
class ThrowingNode : public CMNode
{
public:
    ThrowingNode(CMNodes *nodes, const CMPath &path)
        : CMNode(nodes, path)
    {
        publish();
    }

    TrString title() const override { throw std::bad_alloc(); }
    void setData(const CMSetDataRequest &) override { throw std::bad_alloc(); }
    void getData(const CMGetDataRequest &) override { throw std::bad_alloc(); }
    void getRows(const CMGetRowsRequest &) override { throw std::bad_alloc(); }
    void matchRow(const CMMatchRowRequest &) override { throw std::bad_alloc(); }
};

/// Bad input of a client, after which it and all others are still served.
class DbusBadInputTest : public ModelTest
{
protected:
    DbusBadInputTest() { publishValue("/test/value"_s, 5); }

    void TearDown() override
    {
        ModelClient other(bus().address());
        EXPECT_TRUE(other.getValue("/test/value"_s).succeeds());
    }

    /// A call whose arguments the function writes with sd-bus.
    BusCall callRaw(const std::string &method, const std::function<int(sd_bus_message *)> &write)
    {
        return client->call(
            method, [&](BusWriter &writer) { EXPECT_GE(write(writer.message().get()), 0); });
    }

    /// The reply to a request that the client has sent and waits for.
    CMReply<QVariant> awaitedReply()
    {
        const auto reply = std::make_shared<std::optional<CMReply<QVariant>>>();
        publishRequest("/test/late"_s,
                       [reply](const CMSetDataRequest &request) { *reply = request.reply(); });
        client->send("/test/late"_s, 1);
        EXPECT_TRUE(waitFor([&] { return reply->has_value(); }));
        return reply->value();
    }

    /// The bytes that the process has allocated and not freed.
    static long memoryInUse()
    {
        const struct mallinfo2 info = mallinfo2();
        return long(info.uordblks) + long(info.hblkhd);
    }

    static void expectRefusal(const BusCall &call, const std::string &name)
    {
        EXPECT_EQ(call.errorName(), name);
        EXPECT_THAT(call.errorMessage(), Not(testing::IsEmpty()));
    }
};

TEST_F(DbusBadInputTest, AnUnknownMethodIsRefused)
{
    expectRefusal(client->ask("GetEverything"), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(DbusBadInputTest, AnUnknownObjectIsRefused)
{
    client->setTarget("org.tavo.Model1", "/org/tavo/Nothing", "org.tavo.Model1");
    expectRefusal(client->getValue("/test/value"_s), "org.freedesktop.DBus.Error.UnknownObject");
}

TEST_F(DbusBadInputTest, ALongPathOfAnObjectIsNotRepeated)
{
    client->setTarget("org.tavo.Model1", '/' + std::string(60000, 'x'), "org.tavo.Model1");
    EXPECT_THAT(client->getValue("/test/value"_s).errorMessage(),
                testing::SizeIs(testing::Lt(300U)));
}

TEST_F(DbusBadInputTest, AValueThatCanNotBeSentOnKeepsNothingFromAnInbox)
{
    const QString inbox = client->ask("OpenInbox").text();
    // Its keys and values grow when they are written as variants.
    constexpr int records = 40;
    const BusCall large = callRaw("Call", [&](sd_bus_message *message) {
        sd_bus_message_append(message, "s", inbox.toUtf8().constData());
        sd_bus_message_open_container(message, 'v', "aa{ss}");
        sd_bus_message_open_container(message, 'a', "a{ss}");
        for (int i = 0; i < records; ++i) {
            sd_bus_message_open_container(message, 'a', "{ss}");
            for (int field = 0; field < BusReader::maxFields; ++field) {
                sd_bus_message_append(message, "{ss}", std::to_string(field).c_str(), "v");
            }
            sd_bus_message_close_container(message);
        }
        sd_bus_message_close_container(message);
        return sd_bus_message_close_container(message);
    });
    expectRefusal(large, "org.tavo.Error.UnsupportedValue");
    ASSERT_TRUE(client->send(inbox, 5).succeeds());
    ASSERT_TRUE(client->waitForSignals(1));
    EXPECT_THAT(client->received, testing::ElementsAre("Received " + inbox.toStdString() + " 5"));
}

TEST_F(DbusBadInputTest, WrongArgumentsAreRefused)
{
    expectRefusal(client->ask("GetValue"), invalidArguments);
    expectRefusal(client->ask("GetValue", {"/test/value"_s, "more"_s}), invalidArguments);
    expectRefusal(client->ask("Call", {"/test/value"_s, "text"_s}), invalidArguments);
    expectRefusal(
        callRaw("GetValue", [](sd_bus_message *m) { return sd_bus_message_append(m, "i", 5); }),
        invalidArguments);
}

TEST_F(DbusBadInputTest, AHugeValueIsRefused)
{
    publishEcho("/test/echo"_s);
    constexpr int tooMuch = 1200 * 1024;
    expectRefusal(client->send("/test/echo"_s, QString(tooMuch, 'x')), limitsExceeded);
    expectRefusal(client->send("/test/echo"_s, QByteArray(tooMuch, 'x')), limitsExceeded);
    QVariantList many;
    for (int i = 0; i < tooMuch / 32; ++i) {
        many.append(true);
    }
    expectRefusal(client->send("/test/echo"_s, many), limitsExceeded);
}

TEST_F(DbusBadInputTest, AHugePathIsRefused)
{
    expectRefusal(client->getValue('/' + QString(1 << 20, 'x')), "org.tavo.Error.InvalidPath");
    expectRefusal(client->getValue(QString(1 << 20, '/')), "org.tavo.Error.InvalidPath");
}

TEST_F(DbusBadInputTest, TheLargestAndSmallestRowNumbersAreAccepted)
{
    publishRows("/test/rows"_s, {"/a"_s});
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    EXPECT_TRUE(client->getRows("/test/rows"_s, most, most).succeeds());
    expectRefusal(client->getRows("/test/rows"_s, least, 1), invalidArguments);
    expectRefusal(client->getRows("/test/rows"_s, 0, least), invalidArguments);
}

TEST_F(DbusBadInputTest, AStringThatIsNotUtf8EndsOnlyItsSendersConnection)
{
    ModelClient careless(bus().address());
    const BusCall call = careless.call("GetValue", [](BusWriter &writer) {
        const std::string invalid = "/test/\xff\xfe";
        char *space = nullptr;
        ASSERT_GE(
            sd_bus_message_append_string_space(writer.message().get(), invalid.size(), &space), 0);
        std::copy(invalid.begin(), invalid.end(), space);
    });
    EXPECT_FALSE(call.succeeds());
    EXPECT_TRUE(client->getValue("/test/value"_s).succeeds());
}

TEST_F(DbusBadInputTest, AClientThatVanishesBeforeItsReplyIsForgotten)
{
    const CMReply<QVariant> late = awaitedReply();
    client->leave();
    late.setValue(2);
    settle();
}

TEST_F(DbusBadInputTest, TheRequestsOfAVanishedClientAreNotKept)
{
    if (sanitized) {
        GTEST_SKIP() << "The sanitizer's own memory can't be told apart";
    }
    constexpr int calls = 16;
    constexpr int size = 1 << 20;
    std::vector<CMReply<QVariant>> never;
    publishRequest("/test/never"_s,
                   [&](const CMSetDataRequest &request) { never.push_back(request.reply()); });
    ModelClient other(bus().address());
    {
        const QByteArray bytes(size, 'x');
        for (int i = 0; i < calls; ++i) {
            other.send("/test/never"_s, bytes);
        }
    }
    ASSERT_TRUE(waitFor([&] { return never.size() == calls; }));
    const long before = memoryInUse();
    other.leave();
    EXPECT_TRUE(waitFor([&] { return before - memoryInUse() > calls * size / 2; }));
}

TEST_F(DbusBadInputTest, AReplyThatComesAfterTheBusHasGoneIsForgotten)
{
    const CMReply<QVariant> late = awaitedReply();
    client->leave();
    bus().restart();
    ASSERT_TRUE(waitFor([&] { return log().count("Serving org.tavo.Model1") == 2; }));
    late.setValue(2);
    settle();
}

TEST_F(DbusBadInputTest, MessagesToABusThatHasJustGoneAreDropped)
{
    CMReply<QVariant> late;
    bool asked = false;
    publishRequest("/test/late"_s, [&](const CMSetDataRequest &request) {
        late = request.reply();
        asked = true;
    });
    CMValueNode *watched = publishValue("/test/watched"_s, 0);
    ASSERT_TRUE(client->subscribe("/test/watched"_s, "value"_s).succeeds());
    client->send("/test/late"_s, 1);
    ASSERT_TRUE(waitFor([&] { return asked; }));
    // The event loop does not run, so the module does not know it yet.
    bus().stop();
    watched->setValue(TavoValue().setInt_(1));
    late.setValue(2);
    settle();
    client->leave();
    bus().start();
    EXPECT_TRUE(waitFor([&] { return log().count("Serving org.tavo.Model1") == 2; }));
}

TEST_F(DbusBadInputTest, AClientThatVanishesDuringAFloodIsForgotten)
{
    for (int i = 0; i < 1000; ++i) {
        client->subscribe("/test/"_s + QString::number(i), "value"_s);
    }
    client->leave();
    EXPECT_TRUE(waitFor(
        [] { return CMSubscribe::raiseRowsChange(CMPath("/test/0"_s), {"probe"_s}) == 0; }));
}

class DbusFloodTest : public ModelTest
{
protected:
    DbusFloodTest()
        : ModelTest({{"limits", QVariantHash{{"requestsPerSecond", 100}}}})
    {
        publishValue("/test/value"_s, 5);
    }
};

TEST_F(DbusFloodTest, OfOneClientIsRefusedAndOthersAreServed)
{
    ModelClient flooding(bus().address());
    std::vector<BusCall> calls;
    for (int i = 0; i < 6000; ++i) {
        calls.push_back(flooding.getValue("/test/value"_s));
    }
    EXPECT_TRUE(client->getValue("/test/value"_s).succeeds());
    int refused = 0;
    for (const BusCall &call : calls) {
        refused += call.succeeds() ? 0 : 1;
    }
    EXPECT_GT(refused, 0);
}
TEST_F(DbusBadInputTest, NodesOfTheNotificationsAreNoMessages)
{
    std::vector<QString> opened;
    publishRequest(
        TavoNotificationDisplayOpenPath().toString(), [&opened](const CMSetDataRequest &request) {
            opened.push_back(
                TavoValue(request.value().toHash()).notificationDisplayItem().path().toString());
            request.reply().setValue({});
        });
    const auto open = [this](const CMPath &path) {
        return client->send(
            TavoNotificationDisplayOpenPath().toString(),
            TavoValue()
                .setNotificationDisplayItem(TavoNotificationDisplayItem(TavoHash()).setPath(path))
                .__variant());
    };
    const char *denied = "org.freedesktop.DBus.Error.AccessDenied";
    expectRefusal(open(TavoNotificationDisplayQueuePath()), denied);
    expectRefusal(open(TavoNotificationDisplayCurrentPath()), denied);
    expectRefusal(open(TavoNotificationPlayerIsPlayingPath()), denied);
    EXPECT_TRUE(opened.empty());
    EXPECT_TRUE(open(CMPath("/test/value"_s)).succeeds());
}

TEST_F(DbusBadInputTest, MessagesWithTooLongTextsAreRefused)
{
    int opened = 0;
    publishRequest(TavoNotificationDisplayOpenPath().toString(),
                   [&opened](const CMSetDataRequest &request) {
                       ++opened;
                       request.reply().setValue({});
                   });
    const auto open = [this](const TavoNotificationDisplayItem &item) {
        return client->send(TavoNotificationDisplayOpenPath().toString(),
                            TavoValue().setNotificationDisplayItem(item).__variant());
    };
    const auto text = [](int length) {
        const QList<TrArg> arguments{TrArg(QString(length / 10, 'x'))};
        return TrString(TrCharData{"Test", "%1%1%1%1%1%1%1%1%1%1", nullptr, -1}, arguments);
    };
    expectRefusal(open(TavoNotificationDisplayItem().setTitle(text(1010))), limitsExceeded);
    expectRefusal(open(TavoNotificationDisplayItem().setTitle(QString(1001, 'x'))), limitsExceeded);
    expectRefusal(open(TavoNotificationDisplayItem().setMessage(QString(65537, 'x'))),
                  limitsExceeded);
    expectRefusal(open(TavoNotificationDisplayItem().setId(QString(257, 'x'))), limitsExceeded);
    expectRefusal(open(TavoNotificationDisplayItem().setPath(CMPath("/" + QString(4096, 'x')))),
                  "org.tavo.Error.InvalidPath");
    EXPECT_EQ(opened, 0);
    EXPECT_TRUE(open(TavoNotificationDisplayItem()
                         .setId(QString(256, 'x'))
                         .setTitle(text(1000))
                         .setMessage(QString(65536, 'x')))
                    .succeeds());
    EXPECT_EQ(opened, 1);
}

TEST_F(DbusBadInputTest, NotificationsAndSoundsWithTooLongIdsOrNamesAreRefused)
{
    int requested = 0;
    for (const CMPath &path : {TavoAttentionNotifyPath(), TavoAttentionReplacePath(),
                               TavoNotificationPlayerEnqueuePath()}) {
        publishRequest(path.toString(), [&requested](const CMSetDataRequest &request) {
            ++requested;
            request.reply().setValue({});
        });
    }
    const QString longId(257, 'x');
    const QString longName(4097, 'x');
    for (const CMPath &path : {TavoAttentionNotifyPath(), TavoAttentionReplacePath()}) {
        for (const auto &item :
             {TavoAttentionItem().setId(longId), TavoAttentionItem().setApplication(longName),
              TavoAttentionItem().setSource(longName), TavoAttentionItem().setIcon(longName),
              TavoAttentionItem().setCategory(longName), TavoAttentionItem().setGroup(longName),
              TavoAttentionItem().setLanguage(longName),
              TavoAttentionItem().setSpeech(QString(65537, 'x')),
              TavoAttentionItem().setSound(TavoNotificationPlayerItem().setId(longId))}) {
            expectRefusal(
                client->send(path.toString(), TavoValue().setAttentionItem(item).__variant()),
                limitsExceeded);
        }
    }
    const auto sound = TavoNotificationPlayerItem().setId(longId);
    expectRefusal(client->send(TavoNotificationPlayerEnqueuePath().toString(),
                               TavoValue().setNotificationPlayerItem(sound).__variant()),
                  limitsExceeded);
    EXPECT_EQ(requested, 0);
}

TEST_F(DbusBadInputTest, ARecordWhoseKeysHaveOneHashKeepsNobodyWaiting)
{
    publishEcho("/test/echo"_s);
    std::vector<QString> keys = textsOfOneSeededHash(14);
    keys.resize(14'000); // as many as a value may have
    // Written with sd-bus, because making a hash with these keys would take very long here, too.
    const auto write = [&keys](sd_bus_message *call) {
        sd_bus_message_append(call, "s", "/test/echo");
        sd_bus_message_open_container(call, SD_BUS_TYPE_VARIANT, "a{sv}");
        sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "{sv}");
        for (const QString &key : keys) {
            sd_bus_message_append(call, "{sv}", qUtf8Printable(key), "b", 1);
        }
        sd_bus_message_close_container(call);
        return sd_bus_message_close_container(call);
    };
    const BusCall large = callRaw("Call", write);
    QElapsedTimer waiting;
    waiting.start();
    EXPECT_TRUE(ModelClient(bus().address()).getValue("/test/value"_s).succeeds());
    EXPECT_LT(waiting.elapsed(), 1000);
    // It has too many fields, and too many bytes if it had to wait.
    EXPECT_THAT(large.errorName(), testing::AnyOf(invalidArguments, limitsExceeded));
}

TEST_F(DbusBadInputTest, ManyRecordsWhoseKeysHaveOneHashKeepNobodyWaiting)
{
    publishRequest("/test/sink"_s, [](const CMSetDataRequest &request) {
        request.reply().setValue(request.value().toList().size());
    });
    QVariantList records;
    QVariantHash record;
    for (const QString &key : textsOfOneSeededHash(13)) {
        record.insert(key, true);
        if (record.size() == BusReader::maxFields) {
            records.append(std::exchange(record, {}));
        }
    }
    const BusCall many = client->send("/test/sink"_s, records);
    QElapsedTimer waiting;
    waiting.start();
    EXPECT_TRUE(ModelClient(bus().address()).getValue("/test/value"_s).succeeds());
    EXPECT_LT(waiting.elapsed(), 1000);
    EXPECT_TRUE(many.succeeds());
}

TEST_F(DbusBadInputTest, ManyStringsInPlaceOfActionsKeepNobodyWaiting)
{
    QStringList strings;
    for (int i = 0; i < 20000; ++i) {
        strings.append("k"_s);
    }
    const QVariantHash item{{"title"_s, "t"_s}, {"actions"_s, strings}};
    BusCall notify = client->send("/attention/notify"_s, QVariantHash{{"attentionItem"_s, item}});
    EXPECT_TRUE(client->getValue("/test/value"_s).succeeds());
    notify.waitForAnswer();
}

TEST_F(DbusBadInputTest, RequestsToANodeThatThrowsAreAnswered)
{
    CMNodes nodes;
    new ThrowingNode(&nodes, CMPath("/bad/node"_s)); // owned by the set
    const char *failed = "org.freedesktop.DBus.Error.Failed";
    expectRefusal(client->send("/bad/node"_s, 1), failed);
    expectRefusal(client->getValue("/bad/node"_s), failed);
    expectRefusal(client->getRows("/bad/node"_s, 0, -1), failed);
    expectRefusal(client->ask("List", {"/bad"_s}), failed);
    expectRefusal(client->ask("Tree", {"/"_s}), failed);
    expectRefusal(client->describe({"/bad/node"_s}), failed);
    EXPECT_TRUE(client->ask("List", {"/"_s}).succeeds());
}
} // namespace
