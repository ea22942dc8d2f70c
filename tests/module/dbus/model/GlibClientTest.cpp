// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The interface as used by a GLib program, with GLib's types and main loop.

#include "module/dbus/ModelTest.h"
#include "support/bus/ClientProgram.h"

namespace {
using testing::ElementsAre;

class DbusGlibClientTest : public ModelTest
{
protected:
    void start(const QStringList &arguments)
    {
        m_program = std::make_unique<ClientProgram>(bus(), GLIB_MODEL_CLIENT, arguments);
    }
    bool writes(const std::string &line)
    {
        return m_program->writes(QString::fromStdString(line) + '\n');
    }

    /// Waits until the program ends. Returns the lines that it has written.
    std::vector<std::string> lines()
    {
        EXPECT_TRUE(m_program->succeeds()) << m_program->errors().toStdString();
        std::vector<std::string> lines;
        for (const QString &line : m_program->output().split('\n', Qt::SkipEmptyParts)) {
            lines.push_back(line.toStdString());
        }
        return lines;
    }

    std::vector<std::string> run(const QStringList &arguments)
    {
        start(arguments);
        return lines();
    }

private:
    std::unique_ptr<ClientProgram> m_program;
};

TEST_F(DbusGlibClientTest, GetsBackEveryValueThatItSends)
{
    publishEcho("/test/echo"_s);
    EXPECT_THAT(
        run({"echo", "/test/echo"}),
        ElementsAre("(<int64 -9223372036854775808>,)", "(<uint64 18446744073709551615>,)",
                    "(<int16 -32768>,)", "(<0.10000000000000001>,)", "(<'♫'>,)",
                    "(<[byte 0x00, 0x01, 0x7f, 0x80, 0xff]>,)",
                    "(<{'outer': <{'middle': <{'inner': <[<[byte 0x00, 0x01, 0x7f, 0x80, 0xff]>, "
                    "<uint64 18446744073709551615>]>}>}>}>,)",
                    "(<[<[<1>, <int64 1099511627776>]>, <[<2>, <int64 -1099511627776>]>]>,)",
                    "(<['a', '']>,)"));
}

TEST_F(DbusGlibClientTest, ReadsValues)
{
    publishValue("/test/value"_s, 5);
    EXPECT_THAT(run({"get", "/test/value"}), ElementsAre("(<{'int': <5>}>,)"));
}

TEST_F(DbusGlibClientTest, GetsErrorsByTheirNames)
{
    publishRequest("/test/refusing"_s, [](const CMSetDataRequest &request) {
        request.reply().setError(CMError("Test"_s, "Not like this"_s));
    });
    EXPECT_THAT(run({"send", "/test/refusing"}), ElementsAre("org.tavo.Error.Test: Not like this"));
    EXPECT_THAT(run({"get", "/test/nothing"}),
                ElementsAre("org.tavo.Error.NoSuchNode: There is no node at /test/nothing"));
    EXPECT_THAT(
        run({"get", "no path"}),
        ElementsAre(testing::StartsWith("org.tavo.Error.InvalidPath: \"no path\" is not a path")));
}

TEST_F(DbusGlibClientTest, FollowsValuesRowsAndNodesInItsMainLoop)
{
    CMNodes nodes;
    CMListRowsNode *rows = CMListRowsNode::create(&nodes, CMPath("/test/rows"_s));
    start({"follow", "/test/rows"});
    ASSERT_TRUE(writes("()\n()\n()"));
    rows->rowsAppend(CMPath("/a"_s));
    ASSERT_TRUE(writes("RowsChanged ('/test/rows', ['inserted'], 0, 1)"));
    rows->dispose();
    EXPECT_EQ(lines().back(), "NodeChanged ('/test/rows', false)");

    CMValueNode *value = publishValue("/test/value"_s, 1);
    start({"follow", "/test/value"});
    ASSERT_TRUE(writes("()\n()\n()"));
    value->setValue(TavoValue().setInt_(2));
    ASSERT_TRUE(writes("ValueChanged ('/test/value', <{'int': <2>}>)"));
    value->dispose();
    EXPECT_EQ(lines().back(), "NodeChanged ('/test/value', false)");
}

TEST_F(DbusGlibClientTest, ReceivesWhatOthersSendToItsInbox)
{
    start({"receive"});
    ASSERT_TRUE(writes("/dbus/inbox/1"));
    EXPECT_TRUE(client->send("/dbus/inbox/1"_s, QVariant(qlonglong(1) << 40)).succeeds());
    EXPECT_THAT(lines(), ElementsAre("/dbus/inbox/1",
                                     "Received ('/dbus/inbox/1', <int64 1099511627776>)", "()"));
}

TEST_F(DbusGlibClientTest, KnowsTheVersionAsAProperty)
{
    EXPECT_THAT(run({"version"}), ElementsAre("'" TAVO_VERSION "'"));
}
} // namespace
