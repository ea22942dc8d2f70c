// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The interface in the hands of programs that are not ours.

#include "ModelTest.h"

#include "support/bus/ClientProgram.h"

#include <algorithm>

namespace {
using testing::HasSubstr;

class DbusOtherClientsTest : public ModelTest
{
protected:
    std::string gdbus(const QString &method, const QStringList &arguments)
    {
        return run("gdbus",
                   QStringList{"call", "--session", "--dest", "org.tavo.Model1", "--object-path",
                               "/org/tavo/Model1", "--method", "org.tavo.Model1." + method} +
                       arguments);
    }
    std::string busctl(const QString &method, const QStringList &arguments)
    {
        return run("busctl", QStringList{"--user", "call", "org.tavo.Model1", "/org/tavo/Model1",
                                         "org.tavo.Model1", method} +
                                 arguments);
    }

    /// What a program writes: its output, or what it complains about.
    std::string run(const QString &program, const QStringList &arguments)
    {
        ClientProgram client(bus(), program, arguments);
        const bool succeeded = client.succeeds();
        return (succeeded ? client.output() : client.errors()).trimmed().toStdString();
    }
};

TEST_F(DbusOtherClientsTest, ReadValuesRowsAndNodes)
{
    publishValue("/test/value"_s, 5);
    publishRows("/test/rows"_s, {"/a"_s, "/b"_s})->setTitle("Title"_s);
    EXPECT_EQ(gdbus("GetValue", {"/test/value"}), "(<{'int': <5>}>,)");
    EXPECT_EQ(busctl("GetValue", {"s", "/test/value"}), "v a{sv} 1 \"int\" i 5");
    EXPECT_EQ(gdbus("GetRows", {"/test/rows", "0", "--", "-1"}), "([<'/a'>, <'/b'>],)");
    EXPECT_EQ(busctl("MatchRow", {"sv", "/test/rows", "s", "/b"}), "i 1");
    EXPECT_EQ(gdbus("List", {"/"}), "([('/test', 'group', '')],)");
    EXPECT_EQ(busctl("Tree", {"s", "/test"}), "a(sss) 2 \"/test/rows\" \"list\" \"Title\" "
                                              "\"/test/value\" \"value\" \"\"");
}

TEST_F(DbusOtherClientsTest, SendRequestsAndGetTheirAnswers)
{
    publishEcho("/test/echo"_s);
    EXPECT_EQ(gdbus("Call", {"/test/echo", "<{'a': <(1, @t 18446744073709551615)>}>"}),
              "(<{'a': <[<1>, <uint64 18446744073709551615>]>}>,)");
    EXPECT_EQ(busctl("Call", {"--", "sv", "/test/echo", "x", "-9223372036854775808"}),
              "v x -9223372036854775808");
    EXPECT_EQ(gdbus("Call", {"/test/echo", "<@g ''>"}), "(<signature ''>,)");
}

TEST_F(DbusOtherClientsTest, ShowANodesErrorByItsNameAndMessage)
{
    publishRequest("/test/refusing"_s, [](const CMSetDataRequest &request) {
        request.reply().setError(CMError("Test"_s, "Not like this"_s));
    });
    EXPECT_EQ(gdbus("Call", {"/test/refusing", "<1>"}),
              "Error: GDBus.Error:org.tavo.Error.Test: Not like this");
    EXPECT_EQ(busctl("Call", {"sv", "/test/refusing", "i", "1"}), "Call failed: Not like this");
}

TEST_F(DbusOtherClientsTest, CloseNodes)
{
    EXPECT_EQ(gdbus("Close", {"/test/rows"}), "(false,)");
    EXPECT_EQ(busctl("Close", {"s", "/test/rows"}), "b false");
}

TEST_F(DbusOtherClientsTest, GetInboxesThatGoWithThem)
{
    EXPECT_THAT(gdbus("OpenInbox", {}), HasSubstr("'/dbus/inbox/"));
    EXPECT_TRUE(waitFor([] { return CMCatalog::tree(CMPath("/dbus"_s)).empty(); }));
}

TEST_F(DbusOtherClientsTest, ReadTheVersion)
{
    EXPECT_EQ(run("busctl", {"--user", "get-property", "org.tavo.Model1", "/org/tavo/Model1",
                             "org.tavo.Model1", "Version"}),
              "s \"" TAVO_VERSION "\"");
}
} // namespace
