// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The interface as used by programs that are not ours.

#include "module/dbus/ModelTest.h"
#include "support/bus/ClientProgram.h"
#include <core/records/attention.h>

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

    /// The output of a script for Python's dbus module, in which "model" is the interface.
    std::string python(const QString &script)
    {
        const QString prelude = "import dbus\nmodel = dbus.Interface(dbus.SessionBus().get_object("
                                "'org.tavo.Model1', '/org/tavo/Model1'), 'org.tavo.Model1')\n"_s;
        // The system's Python, which has the dbus module.
        return run("/usr/bin/python3", {"-c", prelude + script});
    }

    /// The output of a program, or its error output.
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
    EXPECT_EQ(gdbus("Describe", {"['/test/rows', '/test/none']"}),
              "([('/test/rows', 'list', 'Title', '')],)");
}

TEST_F(DbusOtherClientsTest, SendRequestsAndGetTheirReplies)
{
    publishEcho("/test/echo"_s);
    EXPECT_EQ(gdbus("Call", {"/test/echo", "<{'a': <(1, @t 18446744073709551615)>}>"}),
              "(<{'a': <[<1>, <uint64 18446744073709551615>]>}>,)");
    EXPECT_EQ(busctl("Call", {"--", "sv", "/test/echo", "x", "-9223372036854775808"}),
              "v x -9223372036854775808");
    EXPECT_EQ(gdbus("Call", {"/test/echo", "<@g ''>"}), "(<signature ''>,)");
}

TEST_F(DbusOtherClientsTest, HaveTheirUserFromTheFirstCall)
{
    QStringList users;
    publishRequest(TavoAttentionNotifyPath().toString(), [&users](const CMSetDataRequest &request) {
        users.append(TavoValue(request.value().toHash()).attentionItem().user());
        request.reply().setValue({});
    });
    for (int client = 0; client < 5; ++client) {
        gdbus("Call", {"/attention/notify", "<{'attentionItem': <{'title': <'Door'>}>}>"});
    }
    EXPECT_THAT(users, testing::AllOf(testing::SizeIs(5), testing::Each(""_s))) << "the host's own";
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

TEST_F(DbusOtherClientsTest, KeepAPythonProgramsTypes)
{
    publishEcho("/test/echo"_s);
    EXPECT_EQ(python(R"(
sent = dbus.Dictionary({'large': dbus.UInt64(2**64 - 1), 'small': dbus.Int64(-2**63),
                        'bytes': dbus.ByteArray(b'\x00\xff'), 'pair': dbus.Struct((1, 'two'))}, signature='sv')
echo = model.Call('/test/echo', sent, signature='sv', byte_arrays=True)
for name in sorted(echo):
    print(name, type(echo[name]).__name__, list(echo[name]) if name == 'pair' else repr(echo[name]).split('(')[1].split(',')[0])
)"_s),
              "bytes ByteArray b'\\x00\\xff'\n"
              "large UInt64 18446744073709551615\n"
              "pair Array [dbus.Int32(1, variant_level=1), dbus.String('two', variant_level=1)]\n"
              "small Int64 -9223372036854775808");
}

TEST_F(DbusOtherClientsTest, UnsubscribeOnce)
{
    EXPECT_EQ(python(R"(
model.Subscribe('/test/value', 'value')
model.Unsubscribe('/test/value', 'value')
try:
    model.Unsubscribe('/test/value', 'value')
except dbus.DBusException as refused:
    print(refused.get_dbus_name())
)"_s),
              "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(DbusOtherClientsTest, CloseNodes)
{
    EXPECT_EQ(gdbus("Close", {"/test/rows"}), "(false,)");
    EXPECT_EQ(busctl("Close", {"s", "/test/rows"}), "b false");
}

TEST_F(DbusOtherClientsTest, GetInboxesThatDisappearWithThem)
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
