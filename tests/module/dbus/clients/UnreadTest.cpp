// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Clients that do not read their messages, on a bus that counts unread messages against the sender.

#include "module/dbus/ModelTest.h"
#include "support/bus/ClientProgram.h"
#include "support/bus/SilentClient.h"

#include <QRegularExpression>

#include <algorithm>
#include <csignal>
#include <future>
#include <map>
#include <stdexcept>

namespace {
using testing::HasSubstr;
using namespace std::chrono_literals;

constexpr int mebi = 1 << 20;

const QString noStatistics =
    QStringLiteral("<policy context=\"mandatory\"><deny send_destination=\"org.freedesktop.DBus\""
                   " send_interface=\"org.freedesktop.DBus.Debug.Stats\"/></policy>");

class DbusUnreadTest : public ModelTest
{
protected:
    explicit DbusUnreadTest(QVariantHash limits = {},
                            const QString &settings = PrivateBus::systemLimits())
        : ModelTest(withoutRate(std::move(limits)), settings)
    {
        publishText("/test/large"_s, mebi);
        publishValue("/test/small"_s, 5);
    }

    CMValueNode *publishText(const QString &path, int size)
    {
        CMValueNode *node = publishValue(path, 0);
        node->setValue(TavoValue().setString_(QString(size, 'x')));
        return node;
    }

    /// The bytes at the bus that a client has not read.
    std::size_t waitingFor(const std::string &name)
    {
        BusClient asking(bus().address());
        asking.setTarget("org.freedesktop.DBus", "/org/freedesktop/DBus",
                         "org.freedesktop.DBus.Debug.Stats");
        BusReader reader =
            asking
                .call("GetConnectionStats",
                      [&](BusWriter &writer) { writer.writeString(QString::fromStdString(name)); })
                .reader();
        reader.enterArray("{sv}");
        while (!reader.isAtEnd()) {
            reader.enterDictEntry("sv");
            if (reader.readString() == "OutgoingBytes"_s) {
                return reader.readVariant().toUInt();
            }
            reader.skip();
            reader.leave();
        }
        throw std::runtime_error("the bus does not tell how much waits");
    }

    /// Whether a client that reads is served every time.
    bool isServing(const QString &path = QStringLiteral("/test/small"), int times = 50)
    {
        for (int i = 0; i < times; ++i) {
            if (!client->getValue(path).succeeds()) {
                return false;
            }
        }
        return true;
    }

    /// How many of the replies to the silent client were sent after this reply.
    long countLater(SilentClient &silent, int replies, const BusMessage &reply)
    {
        auto reading = std::async(std::launch::async, [&] { return silent.readSerials(replies); });
        if (!waitFor([&] { return reading.wait_for(0s) == std::future_status::ready; })) {
            return -1;
        }
        std::uint64_t serial = 0;
        EXPECT_GE(sd_bus_message_get_cookie(reply.get(), &serial), 0);
        const std::vector<std::uint64_t> serials = reading.get();
        return std::count_if(serials.begin(), serials.end(),
                             [serial](std::uint64_t other) { return other > serial; });
    }

    std::unique_ptr<ClientProgram> startPython(const char *script)
    {
        return std::make_unique<ClientProgram>(
            bus(), "/usr/bin/python3"_s,
            QStringList{"-c"_s, QString::fromLatin1(pythonPrelude) + QString::fromLatin1(script)});
    }
    std::string python(const char *script)
    {
        const auto program = startPython(script);
        return (program->succeeds() ? program->output() : program->errors())
            .trimmed()
            .toStdString();
    }

    static QVariantHash withoutRate(QVariantHash limits)
    {
        limits.insert("requestsPerSecond"_s, 0);
        limits.insert(messageBytes, BusWriter::maxMessageBytes);
        return {{"limits"_s, limits}};
    }

private:
    static constexpr const char *pythonPrelude = R"(
import dbus, os, signal
bus = dbus.SessionBus()
model = dbus.Interface(bus.get_object('org.tavo.Model1', '/org/tavo/Model1', introspect=False),
                       'org.tavo.Model1')
)";
};

TEST_F(DbusUnreadTest, KeepsNobodyElseWaiting)
{
    std::vector<CMReply<QVariant>> replies;
    publishRequest("/test/late"_s,
                   [&](const CMSetDataRequest &request) { replies.push_back(request.reply()); });
    const BusCall mine = client->send("/test/late"_s, 1);
    ASSERT_TRUE(waitFor([&] { return replies.size() == 1; }));
    SilentClient silent(bus().address());
    constexpr int calls = 15;
    for (int i = 0; i < calls; ++i) {
        silent.call("/test/late");
    }
    ASSERT_TRUE(waitFor([&] { return replies.size() == 1 + calls; }));
    bus().pause();
    for (int i = calls; i >= 0; --i) {
        replies[std::size_t(i)].setValue(QString(i == 0 ? 1 : mebi, 'x'));
    }
    bus().resume();
    ASSERT_TRUE(mine.succeeds());
    EXPECT_GT(countLater(silent, calls, mine.reply()), calls / 2);
}

TEST_F(DbusUnreadTest, OfIntrospectionKeepsNobodyElseWaiting)
{
    SilentClient silent(bus().address());
    constexpr int calls = 120;
    bus().pause();
    for (int i = 0; i < calls; ++i) {
        silent.introspect();
    }
    const BusCall mine = client->getValue("/test/small"_s);
    bus().resume();
    ASSERT_TRUE(mine.succeeds());
    EXPECT_GT(countLater(silent, calls, mine.reply()), calls / 2);
}

TEST_F(DbusUnreadTest, ByOneClientStopsNoOther)
{
    SilentClient silent(bus().address());
    constexpr int calls = 200;
    for (int i = 0; i < calls; ++i) {
        silent.getValue("/test/large");
    }
    EXPECT_TRUE(isServing());
    EXPECT_TRUE(isServing("/test/large"_s, 10));
    EXPECT_LT(waitingFor(silent.name()), std::size_t(17 * mebi));
}

TEST_F(DbusUnreadTest, EndsInARefusalAndIsReadLater)
{
    SilentClient silent(bus().address());
    constexpr int calls = 40;
    for (int i = 0; i < calls; ++i) {
        silent.getValue("/test/large");
    }
    ASSERT_TRUE(isServing());
    std::map<std::string, int> errors = silent.read(calls);
    EXPECT_GE(errors[""], 15);
    EXPECT_GT(errors[limitsExceeded], 0);
    EXPECT_EQ(errors[""] + errors[limitsExceeded], calls);
    silent.getValue("/test/large");
    ASSERT_TRUE(isServing());
    EXPECT_EQ(silent.read(1)[""], 1);
}

TEST_F(DbusUnreadTest, IsNoReasonToSayThatACallWasNotCarriedOut)
{
    int carriedOut = 0;
    publishRequest("/test/counter"_s, [&](const CMSetDataRequest &request) {
        ++carriedOut;
        request.reply().setValue(QString(mebi, 'x'));
    });
    constexpr int calls = 30;
    std::vector<std::string> errors;
    SilentClient silent(bus().address());
    for (int i = 0; i < calls; ++i) {
        silent.call("/test/counter");
    }
    ASSERT_TRUE(waitFor([&] { return carriedOut > 10; }));
    ASSERT_TRUE(isServing());
    int leftOut = 0;
    int refused = 0;
    for (const std::string &text : silent.readTexts(calls)) {
        leftOut += text.find("was carried out") != std::string::npos ? 1 : 0;
        refused += text.find("A client may leave") == 0 ? 1 : 0;
    }
    EXPECT_GT(leftOut, 0);
    EXPECT_EQ(carriedOut, calls - refused);
}

TEST_F(DbusUnreadTest, StaysLittleForAClientThatCallsOneByOne)
{
    EXPECT_EQ(python(R"(
print(sum(len(model.GetValue('/test/large')['string']) for i in range(100)))
)"),
              std::to_string(100 * mebi));
}

TEST_F(DbusUnreadTest, StaysLittleForAClientThatCallsAheadAndReads)
{
    publishText("/test/huge"_s, 5 * mebi);
    SilentClient reader(bus().address());
    std::map<std::string, int> errors;
    auto reading = std::async(std::launch::async, [&] {
        reader.getValue("/test/huge");
        for (int i = 0; i < 40; ++i) {
            reader.getValue("/test/huge");
            ++errors[reader.read(1).begin()->first];
        }
    });
    ASSERT_TRUE(waitFor([&] { return reading.wait_for(0s) == std::future_status::ready; }, 60s));
    reading.get();
    EXPECT_THAT(errors, testing::ElementsAre(testing::Pair("", 40)));
}

TEST_F(DbusUnreadTest, StaysLittleForAClientThatReadsLargeRepliesOneByOne)
{
    publishText("/test/huge"_s, 20 * mebi);
    EXPECT_EQ(python(R"(
print(sum(len(model.GetValue('/test/huge')['string']) for i in range(5)))
)"),
              std::to_string(100 * mebi));
}

TEST_F(DbusUnreadTest, OfAStoppedSubscriberIsLeftOutAndLoggedOnce)
{
    CMValueNode *busy = publishText("/test/busy"_s, mebi);
    const auto stopped = startPython(R"(
model.Subscribe('/test/busy', 'value')
print('subscribed', flush=True)
os.kill(os.getpid(), signal.SIGSTOP)
while True:
    try:
        print('value', len(model.GetValue('/test/large')['string']), flush=True)
        break
    except dbus.DBusException as error:
        print(error.get_dbus_name())
)");
    ASSERT_TRUE(stopped->writes("subscribed"_s));
    const auto endings = [this] { return log().find("some are left out").size(); };
    for (int i = 0; i < 100; ++i) {
        busy->setValue(TavoValue().setString_(QString(mebi, QChar('a' + i % 2))));
        settle();
    }
    EXPECT_EQ(endings(), 1U);
    EXPECT_TRUE(isServing());
    stopped->sendSignal(SIGCONT);
    EXPECT_TRUE(stopped->writes("value "_s + QString::number(mebi)))
        << stopped->errors().toStdString();
}

TEST_F(DbusUnreadTest, InAnInboxFullOfAnothersCallsEndsNoSubscriptionAndIsReported)
{
    CMValueNode *value = publishValue("/test/value"_s, 0);
    const auto victim = startPython(R"(
import dbus.mainloop.glib
from gi.repository import GLib
bus = dbus.bus.BusConnection(dbus.bus.BUS_SESSION, mainloop=dbus.mainloop.glib.DBusGMainLoop())
model = dbus.Interface(bus.get_object('org.tavo.Model1', '/org/tavo/Model1', introspect=False),
                       'org.tavo.Model1')
def show(path, argument, member=None):
    print(member, path, argument if member == 'Dropped' else '', flush=True)
for name in ('Dropped', 'ValueChanged'):
    bus.add_signal_receiver(show, name, 'org.tavo.Model1', member_keyword='member')
model.Subscribe('/test/value', 'value')
print('inbox', model.OpenInbox(), flush=True)
os.kill(os.getpid(), signal.SIGSTOP)
GLib.MainLoop().run()
)");
    ASSERT_TRUE(victim->writes("inbox /dbus/inbox/1"_s)) << victim->errors().toStdString();
    for (int i = 0; i < 60; ++i) {
        EXPECT_TRUE(client->send("/dbus/inbox/1"_s, QByteArray(1'000'000, 'x')).succeeds());
    }
    victim->sendSignal(SIGCONT);
    EXPECT_TRUE(victim->writes("Dropped /dbus/inbox/1 "_s)) << victim->errors().toStdString();
    value->setValue(TavoValue().setInt_(7));
    EXPECT_TRUE(victim->writes("ValueChanged /test/value"_s));
    EXPECT_TRUE(log().find("its subscriptions end").empty());
}

TEST_F(DbusUnreadTest, StaysLittleForASubscriberThatReads)
{
    CMValueNode *busy = publishText("/test/busy"_s, mebi);
    ASSERT_TRUE(client->subscribe("/test/busy"_s, "value"_s).succeeds());
    constexpr int changes = 100;
    for (int i = 0; i < changes; ++i) {
        busy->setValue(TavoValue().setString_(QString(mebi, QChar('a' + i % 2))));
        ASSERT_TRUE(client->waitForSignals(std::size_t(i) + 1));
    }
}

class DbusLittleUnreadTest : public DbusUnreadTest
{
protected:
    DbusLittleUnreadTest()
        : DbusUnreadTest({{"unreadBytes", mebi}})
    {
    }
};

TEST_F(DbusLittleUnreadTest, LeavesOutTheEndOfADesktopNotificationAndSaysSo)
{
    std::vector<CMSetDataRequest> requests;
    publishRequest(TavoNotificationDisplayOpenPath().toString(),
                   [&](const CMSetDataRequest &request) { requests.push_back(request); });
    SilentClient silent(bus().address());
    silent.notify();
    silent.getValue("/test/large");
    ASSERT_TRUE(waitFor([&] { return waitingFor(silent.name()) > mebi / 2; }));
    constexpr const char *name = "org.freedesktop.Notifications";
    client->setTarget(name, "/org/freedesktop/Notifications", name);
    EXPECT_TRUE(client->call("CloseNotification", [](BusWriter &writer) { writer.writeUInt32(1); })
                    .succeeds());
    EXPECT_EQ(log().count(log4cplus::WARN_LOG_LEVEL,
                          "The client " + silent.name() +
                              " doesn't read its signals: NotificationClosed is left out"),
              1);
}

TEST_F(DbusLittleUnreadTest, IncludesDescriptions)
{
    SilentClient silent(bus().address());
    // More than 40 MiB.
    constexpr int calls = 12000;
    for (int i = 0; i < calls; ++i) {
        silent.introspect();
    }
    EXPECT_TRUE(isServing());
    EXPECT_LT(waitingFor(silent.name()), std::size_t(20 * mebi));
}

TEST_F(DbusLittleUnreadTest, IncludesRefusals)
{
    SilentClient silent(bus().address());
    constexpr int calls = 20000;
    for (int i = 0; i < calls; ++i) {
        silent.getValue("/test/large");
    }
    EXPECT_TRUE(isServing());
    EXPECT_LT(waitingFor(silent.name()), std::size_t(3 * mebi));
}

TEST_F(DbusLittleUnreadTest, LetsTavoWatchPrintWhatWasLeftOutAndReadAgain)
{
    CMValueNode *busy = publishValue("/test/busy"_s, 0);
    publishRequest("/test/set"_s, [&](const CMSetDataRequest &request) {
        busy->setValue(TavoValue().setString_(request.value().toString()));
        request.reply().setValue({});
    });
    ClientProgram text(bus(), QStringLiteral(TAVO_PROGRAM), {"watch"_s, "/test/busy"_s});
    ClientProgram json(bus(), QStringLiteral(TAVO_PROGRAM),
                       {"watch"_s, "--json"_s, "/test/busy"_s});
    ASSERT_TRUE(text.writes(R"({"int":0})"_s)) << text.errors().toStdString();
    ASSERT_TRUE(json.writes(R"({"int":0})"_s)) << json.errors().toStdString();
    text.sendSignal(SIGSTOP);
    json.sendSignal(SIGSTOP);
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(client->send("/test/set"_s, QString(1'000'000, QChar('a' + i))).succeeds());
    }
    busy->setValue(TavoValue().setInt_(7));
    text.sendSignal(SIGCONT);
    json.sendSignal(SIGCONT);
    EXPECT_TRUE(text.writes(R"({"int":7})"_s)) << text.errors().toStdString();
    EXPECT_TRUE(json.writes(R"({"int":7})"_s)) << json.errors().toStdString();
    EXPECT_TRUE(text.output().contains(QRegularExpression(
        R"( /test/busy changes left out: [1-9]\d*\n[^\n]* /test/busy \{"int":7\}\n)"_s)));
    EXPECT_TRUE(json.output().contains(QRegularExpression(
        R"(\n\{"dropped":[1-9]\d*,"path":"/test/busy"\}\n\{"path":"/test/busy","value":\{"int":7\}\}\n)"_s)));
}

TEST_F(DbusLittleUnreadTest, KeepsCallsInTheirOrder)
{
    publishText("/test/medium"_s, mebi / 4);
    std::vector<int> handled;
    publishRequest("/test/order"_s, [&](const CMSetDataRequest &request) {
        handled.push_back(request.value().toInt());
        request.reply().setValue({});
    });
    std::vector<BusCall> calls;
    constexpr int rounds = 50;
    for (int i = 0; i < rounds; ++i) {
        calls.push_back(client->getValue("/test/medium"_s));
        calls.push_back(client->send("/test/order"_s, i));
    }
    for (const BusCall &call : calls) {
        EXPECT_TRUE(call.waitForAnswer());
    }
    EXPECT_THAT(handled, testing::Not(testing::IsEmpty()));
    EXPECT_TRUE(std::is_sorted(handled.begin(), handled.end()));
}

class DbusUnreadByAllTest : public DbusUnreadTest
{
protected:
    DbusUnreadByAllTest()
        : DbusUnreadTest({{"unreadBytes", 8 * mebi}, {"totalUnreadBytes", 16 * mebi}})
    {
    }
};

TEST_F(DbusUnreadByAllTest, LeavesSomethingForClientsThatRead)
{
    std::vector<std::unique_ptr<SilentClient>> silent;
    constexpr int clients = 6;
    constexpr int calls = 20;
    for (int i = 0; i < clients; ++i) {
        silent.push_back(std::make_unique<SilentClient>(bus().address()));
        for (int j = 0; j < calls; ++j) {
            silent.back()->getValue("/test/large");
        }
        ASSERT_TRUE(isServing());
    }
    const auto waiting = [&] {
        std::size_t bytes = 0;
        for (const auto &one : silent) {
            bytes += waitingFor(one->name());
        }
        return bytes;
    };
    // The last replies are on their way. One user gets three quarters of the whole.
    EXPECT_TRUE(waitFor([&] { return waiting() > std::size_t(11 * mebi); })) << waiting();
    EXPECT_LT(waiting(), std::size_t(17 * mebi));
    const BusCall large = client->getValue("/test/large"_s);
    EXPECT_EQ(large.errorName(), limitsExceeded);
    EXPECT_THAT(large.errorMessage(),
                HasSubstr("All clients together may leave no more than 16777216 bytes"));
    silent.clear();
    EXPECT_TRUE(isServing("/test/large"_s));
}

TEST_F(DbusUnreadByAllTest, MakesRefusalsLateForAClientThatReads)
{
    SilentClient first(bus().address());
    SilentClient second(bus().address());
    for (SilentClient *silent : {&first, &second}) {
        for (int i = 0; i < 20; ++i) {
            silent->getValue("/test/large");
        }
        ASSERT_TRUE(isServing());
    }
    SilentClient reading(bus().address());
    publishText("/test/free"_s, 20'000); // more than is always free
    reading.getValue("/test/free");
    constexpr int calls = 32;
    for (int i = 0; i < calls; ++i) {
        reading.getValue("/test/large");
    }
    ASSERT_TRUE(isServing());
    auto replies = std::async(std::launch::async, [&] { return reading.read(1 + calls); });
    ASSERT_TRUE(waitFor([&] { return replies.wait_for(0s) == std::future_status::ready; }));
    EXPECT_GT(replies.get()[limitsExceeded], calls / 2);
}

TEST_F(DbusUnreadByAllTest, OfDescriptionsStopsNoOther)
{
    std::vector<std::unique_ptr<SilentClient>> silent;
    constexpr int clients = 14;
    constexpr int calls = 700;
    for (int i = 0; i < clients; ++i) {
        silent.push_back(std::make_unique<SilentClient>(bus().address()));
        for (int j = 0; j < calls; ++j) {
            silent.back()->introspect();
        }
        ASSERT_TRUE(isServing()) << i;
    }
    EXPECT_TRUE(client->describe({"/test/small"_s}).succeeds());
    // A new client still gets a description.
    BusClient newcomer(bus().address());
    newcomer.setTarget("org.tavo.Model1", "/org/tavo/Model1",
                       "org.freedesktop.DBus.Introspectable");
    EXPECT_TRUE(newcomer.call("Introspect").succeeds());
}

class DbusStalledTest : public DbusUnreadTest
{
protected:
    DbusStalledTest()
        : DbusUnreadTest({}, PrivateBus::systemLimits() + noStatistics)
    {
    }
};

TEST_F(DbusStalledTest, HostServesTheOthersAgainSoon)
{
    SilentClient silent(bus().address());
    constexpr int calls = 150;
    for (int i = 0; i < calls; ++i) {
        silent.getValue("/test/large");
    }
    ASSERT_TRUE(DbusTest::isServing(2));
    EXPECT_TRUE(client->getValue("/test/small"_s).succeeds());
    EXPECT_EQ(log().find("The bus takes no more messages").size(), 1U);
    EXPECT_EQ(log().find("Another program serves").size(), 0U);
}

class DbusUncountedTest : public DbusUnreadTest
{
protected:
    DbusUncountedTest()
        : DbusUnreadTest({{"unreadBytes", 8 * mebi}}, noStatistics)
    {
    }
};

TEST_F(DbusUncountedTest, RepliesAreNotRefusedWhenTheBusDoesNotTell)
{
    SilentClient silent(bus().address());
    constexpr int calls = 20;
    for (int i = 0; i < calls; ++i) {
        silent.getValue("/test/large");
    }
    ASSERT_TRUE(isServing());
    EXPECT_EQ(silent.read(calls)[""], calls);
    EXPECT_EQ(log().find("The bus doesn't tell what clients haven't read").size(), 1U);
}

TEST_F(DbusUncountedTest, RepliesAreNotRefusedHoweverManyThereAre)
{
    EXPECT_EQ(python(R"(
print(sum(len(model.GetValue('/test/large')['string']) for i in range(100)))
)"),
              std::to_string(100 * mebi));
}
} // namespace
