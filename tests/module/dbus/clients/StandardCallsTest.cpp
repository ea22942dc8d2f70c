// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The calls that every program on a bus must understand.

#include "module/dbus/ModelTest.h"

namespace {
using testing::HasSubstr;
using testing::Not;

class DbusStandardCallsTest : public ModelTest
{
protected:
    BusCall ask(const char *path, const char *interface, const char *method,
                const std::vector<QString> &texts = {})
    {
        client->setTarget("org.tavo.Model1", path,
                          std::string("org.freedesktop.DBus.") + interface);
        return client->ask(method, texts);
    }
    std::string describe(const char *path)
    {
        return ask(path, "Introspectable", "Introspect").text().toStdString();
    }
    std::string errorOf(const BusCall &call) const
    {
        const std::string start = "org.freedesktop.DBus.Error.";
        const std::string name = call.errorName();
        return name.compare(0, start.size(), start) == 0 ? name.substr(start.size()) : name;
    }
};

TEST_F(DbusStandardCallsTest, DescribeTheWayToEachObject)
{
    EXPECT_THAT(describe("/"), HasSubstr("<node name=\"org\"/>"));
    EXPECT_THAT(describe("/org"), HasSubstr("<node name=\"tavo\"/>"));
    EXPECT_THAT(describe("/org"), HasSubstr("<node name=\"freedesktop\"/>"));
    EXPECT_THAT(describe("/org/tavo"), HasSubstr("<node name=\"Model1\"/>"));
    EXPECT_THAT(describe("/org/tavo"), Not(HasSubstr("org.tavo.Model1")));
    EXPECT_THAT(describe("/org/tavo/Model1"), HasSubstr("<interface name=\"org.tavo.Model1\">"));
    EXPECT_THAT(describe("/org/tavo/Model1"), HasSubstr("org.freedesktop.DBus.Properties"));
}

TEST_F(DbusStandardCallsTest, KnowNoOtherObject)
{
    for (const char *path : {"/org/tavo/Model1/below", "/org/tav", "/other"}) {
        EXPECT_EQ(errorOf(ask(path, "Introspectable", "Introspect")), "UnknownObject") << path;
        EXPECT_EQ(errorOf(ask(path, "Properties", "GetAll", {""_s})), "UnknownObject") << path;
    }
}

TEST_F(DbusStandardCallsTest, ReplyToAPingAtAnyPath)
{
    EXPECT_TRUE(ask("/", "Peer", "Ping").succeeds());
    EXPECT_TRUE(ask("/org/tavo/Model1", "Peer", "Ping").succeeds());
    EXPECT_EQ(ask("/", "Peer", "GetMachineId").text().size(), 32);
}

TEST_F(DbusStandardCallsTest, ReadTheProperties)
{
    const char *path = "/org/tavo/Model1";
    const BusCall one = ask(path, "Properties", "Get", {"org.tavo.Model1"_s, "Version"_s});
    EXPECT_EQ(one.variant(), QVariant(TAVO_VERSION));
    for (const char *interface : {"org.tavo.Model1", ""}) {
        BusReader reader = ask(path, "Properties", "GetAll", {interface}).reader();
        reader.enterArray("{sv}");
        reader.enterDictEntry("sv");
        EXPECT_EQ(reader.readString(), "Version");
        EXPECT_EQ(reader.readVariant(), QVariant(TAVO_VERSION));
    }
}

TEST_F(DbusStandardCallsTest, RefusePropertiesThatAreNotThere)
{
    const char *path = "/org/tavo/Model1";
    const auto get = [&](const char *interface, const char *property) {
        return errorOf(ask(path, "Properties", "Get", {interface, property}));
    };
    EXPECT_EQ(get("org.tavo.Model1", "Other"), "UnknownProperty");
    EXPECT_EQ(get("org.tavo.Other", "Version"), "UnknownProperty");
    EXPECT_EQ(errorOf(ask(path, "Properties", "GetAll", {"org.tavo.Other"_s})), "UnknownInterface");
    const BusCall set = client->call("Set", [](BusWriter &writer) {
        writer.writeString("org.tavo.Model1"_s);
        writer.writeString("Other"_s);
        writer.writeVariant(1);
    });
    EXPECT_EQ(errorOf(set), "UnknownProperty");
}

TEST_F(DbusStandardCallsTest, RefuseUnknownMethodsAndWrongArguments)
{
    const char *path = "/org/tavo/Model1";
    EXPECT_EQ(errorOf(ask(path, "Peer", "Pong")), "UnknownMethod");
    EXPECT_EQ(errorOf(ask(path, "Properties", "Get")), "UnknownMethod");
    client->setTarget("org.tavo.Model1", path, "org.tavo.Model1");
    const BusCall call = client->ask("GetValue", {"/a"_s, "/b"_s});
    EXPECT_EQ(errorOf(call), "InvalidArgs");
    EXPECT_EQ(call.errorMessage(),
              "The arguments of GetValue have the signature 'ss' instead of 's'");
}
} // namespace
