// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"
#include "support/bus/InterfaceXml.h"

#include <map>

namespace {
using testing::ElementsAreArray;
using testing::SizeIs;

class DbusInterfaceTest : public ModelTest
{
protected:
    QByteArray introspection()
    {
        client->setTarget("org.tavo.Model1", "/org/tavo/Model1",
                          "org.freedesktop.DBus.Introspectable");
        return client->ask("Introspect").text().toUtf8();
    }
};

TEST_F(DbusInterfaceTest, IsWhatItsFileSays)
{
    const auto written =
        membersOfFile(INTERFACE_FOLDER "/org.tavo.Model1.xml", "org.tavo.Model1"_s);
    EXPECT_THAT(written, SizeIs(19));
    EXPECT_THAT(membersOf(introspection(), "org.tavo.Model1"_s), ElementsAreArray(written));
}

TEST_F(DbusInterfaceTest, RepliesWithTheTypesThatItsFileSays)
{
    publishValue("/test/value"_s, 5);
    publishRows("/test/rows"_s, {"/a"_s});
    publishEcho("/test/echo"_s);
    client->subscribe("/test/rows"_s, "rows"_s);
    const QString inbox = client->ask("OpenInbox").text();
    const std::map<std::string, BusCall> calls{
        {"GetValue", client->getValue("/test/value"_s)},
        {"Call", client->send("/test/echo"_s, 1)},
        {"List", client->ask("List", {"/test"_s})},
        {"Tree", client->ask("Tree", {"/test"_s})},
        {"Describe", client->describe({"/test/rows"_s})},
        {"GetRows", client->getRows("/test/rows"_s, 0, -1)},
        {"Preview", client->preview("/test/rows"_s, 1, 10)},
        {"MatchRow", client->call("MatchRow",
                                  [](BusWriter &writer) {
                                      writer.writeString("/test/rows"_s);
                                      writer.writeVariant("/a"_s);
                                  })},
        {"Close", client->ask("Close", {"/test/rows"_s})},
        {"Subscribe", client->subscribe("/test/value"_s, "value"_s)},
        {"Unsubscribe", client->unsubscribe("/test/value"_s, "value"_s)},
        {"OpenInbox", client->ask("OpenInbox")},
        {"CloseInbox", client->ask("CloseInbox", {inbox})}};
    for (const BusInterface::Method &method : BusInterface::model().methods) {
        const BusCall &call = calls.at(method.name);
        ASSERT_TRUE(call.succeeds()) << method.name << ": " << call.errorMessage();
        EXPECT_TRUE(call.reply().hasSignature(method.out.c_str())) << method.name;
    }
}

TEST_F(DbusInterfaceTest, TellsTheVersion)
{
    client->setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.freedesktop.DBus.Properties");
    EXPECT_EQ(client->ask("Get", {"org.tavo.Model1"_s, "Version"_s}).variant(),
              QVariant(TAVO_VERSION));
}

TEST_F(DbusInterfaceTest, DoesNotLetAnyoneSetTheVersion)
{
    client->setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.freedesktop.DBus.Properties");
    const BusCall call = client->call("Set", [](BusWriter &writer) {
        writer.writeString("org.tavo.Model1"_s);
        writer.writeString("Version"_s);
        writer.writeVariant("9"_s);
    });
    EXPECT_EQ(call.errorName(), "org.freedesktop.DBus.Error.PropertyReadOnly");
}
} // namespace
