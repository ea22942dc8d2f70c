// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"

#include "support/bus/InterfaceXml.h"

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
    EXPECT_THAT(written, SizeIs(16));
    EXPECT_THAT(membersOf(introspection(), "org.tavo.Model1"_s), ElementsAreArray(written));
}

TEST_F(DbusInterfaceTest, TellsTheVersion)
{
    client->setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.freedesktop.DBus.Properties");
    EXPECT_EQ(client->ask("Get", {"org.tavo.Model1"_s, "Version"_s}).variant(),
              QVariant(TAVO_VERSION));
}

TEST_F(DbusInterfaceTest, LetsNobodySetTheVersion)
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
