// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"
#include "support/bus/InterfaceXml.h"

namespace {
using testing::ElementsAreArray;
using testing::SizeIs;

class InterfaceTest : public DesktopTest
{
};

TEST_F(InterfaceTest, IsTheOneInItsFile)
{
    ClientProgram program(bus(), "gdbus"_s,
                          {"introspect"_s, "--session"_s, "--xml"_s, "--dest"_s,
                           "org.freedesktop.Notifications"_s, "--object-path"_s,
                           "/org/freedesktop/Notifications"_s});
    ASSERT_TRUE(program.succeeds()) << program.errors().toStdString();
    const QString name = "org.freedesktop.Notifications"_s;
    const auto written = membersOfFile(QStringLiteral(INTERFACE_FILE), name);
    EXPECT_THAT(written, SizeIs(10));
    EXPECT_THAT(membersOf(program.output().toUtf8(), name), ElementsAreArray(written));
}

TEST_F(InterfaceTest, ListsItsCapabilities)
{
    EXPECT_EQ(result("GetCapabilities"_s),
              "(['action-icons', 'actions', 'body', 'body-markup', 'icon-static', 'sound'],)"_s);
}

TEST_F(InterfaceTest, SaysWhichServerItIs)
{
    EXPECT_EQ(result("GetServerInformation"_s), "('Tavo', 'Tavo', '" TAVO_VERSION "', '1.2')"_s);
}

TEST_F(InterfaceTest, ComesBackWithTheBusAndKeepsWhatIsOpen)
{
    const quint32 before = notifySend({"-t"_s, "0"_s, "Title"_s, "before"_s});
    bus().restart();
    ASSERT_TRUE(isServing(2));
    EXPECT_EQ(rowOf(before).title().toString(), "before"_s);
    const quint32 after = notifySend({"-t"_s, "0"_s, "Title"_s, "after"_s});
    EXPECT_NE(after, before);
    EXPECT_EQ(result("CloseNotification"_s, {QString::number(before)}), "()"_s);
    EXPECT_FALSE(isOpen(before));
}

TEST_F(InterfaceTest, GoesWithTheModule)
{
    notifySend({"-t"_s, "0"_s, "Title"_s});
    unload();
    EXPECT_TRUE(CMCatalog::tree(CMPath("/dbus"_s)).empty());
    EXPECT_TRUE(result("GetCapabilities"_s).contains("ServiceUnknown"_s));
}

class NoInterfaceTest : public testing::Test
{
};

TEST_F(NoInterfaceTest, IsServedWhenTheConfigurationSaysSo)
{
    PrivateBus bus;
    LogCapture log("Dbus");
    const LoadedModule module(QStringLiteral(DBUS_MODULE_FILE), "dbus",
                              {{"bus"_s, bus.address()}, {"notifications"_s, false}});
    EXPECT_TRUE(waitFor([&] { return log.contains("Serving org.tavo.Model1"); }));
    settle();
    EXPECT_FALSE(log.contains("Serving org.freedesktop.Notifications"));
}

TEST_F(NoInterfaceTest, ButAnErrorWithoutADisplay)
{
    PrivateBus bus;
    LogCapture log("Dbus");
    const LoadedModule module(QStringLiteral(DBUS_MODULE_FILE), "dbus", {{"bus"_s, bus.address()}});
    ASSERT_TRUE(waitFor([&] { return log.contains("Serving org.freedesktop.Notifications"); }));
    ClientProgram program(bus, "notify-send"_s, {"Title"_s});
    EXPECT_FALSE(program.succeeds());
    EXPECT_TRUE(program.errors().contains("org.tavo.Error.NoSuchNode"_s) ||
                program.errors().contains("/notifications/display/open"_s))
        << program.errors().toStdString();
    EXPECT_TRUE(CMCatalog::tree(CMPath("/dbus/notifications"_s)).empty());
}
} // namespace
