// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The policy that is installed for the system bus, on a bus that otherwise allows nothing.

#include "module/dbus/ModelTest.h"
#include "support/bus/ClientProgram.h"

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace {
using testing::HasSubstr;
using testing::StartsWith;

class DbusPolicyTest : public testing::Test
{
protected:
    DbusPolicyTest()
        : m_bus("<policy context=\"default\"><allow user=\"*\"/><deny own=\"*\"/>"
                "<deny send_type=\"method_call\"/>"
                "<allow send_destination=\"org.freedesktop.DBus\"/>"
                "<deny send_destination=\"org.freedesktop.DBus\" "
                "send_interface=\"org.freedesktop.DBus.Debug.Stats\"/></policy>"
                "<include>" INTERFACE_FOLDER "/org.tavo.Model1.conf</include>")
    {
    }

    void SetUp() override
    {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "it takes root to be somebody else";
        }
        // Other users must reach the socket.
        ::chmod(QFile::encodeName(m_bus.folder()).constData(), 0755);
        m_module = std::make_unique<LoadedModule>(MODULE_FILE, "dbus",
                                                  QVariantHash{{"bus", m_bus.address()}});
        CMValueNode::create(&m_nodes, CMPath("/test/value"_s));
    }

    /// The output of busctl when the user calls a method.
    std::string call(const char *user, const QStringList &arguments,
                     const QStringList &target = {"org.tavo.Model1", "/org/tavo/Model1",
                                                  "org.tavo.Model1"})
    {
        ClientProgram client(m_bus, "setpriv",
                             QStringList{"--reuid", user, "--regid", "nogroup", "--clear-groups",
                                         "busctl", "--user", "call"} +
                                 target + arguments);
        const bool succeeded = client.succeeds();
        return (succeeded ? client.output() : client.errors()).trimmed().toStdString();
    }

    LogCapture &log() { return m_log; }

    const QStringList notifications{"org.freedesktop.Notifications",
                                    "/org/freedesktop/Notifications",
                                    "org.freedesktop.Notifications"};

private:
    PrivateBus m_bus;
    LogCapture m_log{"Dbus"};
    std::unique_ptr<LoadedModule> m_module;
    CMNodes m_nodes;
};

TEST_F(DbusPolicyTest, LetsEveryoneSeeThatItIsThere)
{
    EXPECT_THAT(call("nobody", {"Get", "ss", "org.tavo.Model1", "Version"},
                     {"org.tavo.Model1", "/org/tavo/Model1", "org.freedesktop.DBus.Properties"}),
                StartsWith("v s \""));
}

TEST_F(DbusPolicyTest, DoesNotLetEveryoneReadOrSendRequests)
{
    for (const QStringList &arguments :
         {QStringList{"GetValue", "s", "/test/value"},
          QStringList{"GetRows", "sii", "/a", "0", "1"}, QStringList{"Tree", "s", "/"},
          QStringList{"Describe", "as", "1", "/test/value"},
          QStringList{"Subscribe", "ss", "/test/value", "value"},
          QStringList{"Call", "sv", "/test/value", "i", "1"}, QStringList{"Close", "s", "/a"},
          QStringList{"OpenInbox"}}) {
        EXPECT_THAT(call("nobody", arguments), HasSubstr("Access denied"));
    }
}

TEST_F(DbusPolicyTest, LetsRootRead)
{
    EXPECT_EQ(call("root", {"GetValue", "s", "/test/value"}), "v a{sv} 0");
    EXPECT_THAT(call("root", {"Tree", "s", "/"}), HasSubstr("/test/value"));
    EXPECT_EQ(call("root", {"Subscribe", "ss", "/test/value", "value"}), "");
}

TEST_F(DbusPolicyTest, LetsRootSendRequests)
{
    EXPECT_THAT(call("root", {"Call", "sv", "/test/value", "i", "1"}),
                StartsWith("Call failed: The node at /test/value can't be set"));
    EXPECT_THAT(call("root", {"OpenInbox"}), StartsWith("s \"/dbus/inbox/"));
}

TEST_F(DbusPolicyTest, LetsOnlyTheHostAskTheBusWhatIsUnread)
{
    const QStringList statistics{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                 "org.freedesktop.DBus.Debug.Stats"};
    const QStringList question{"GetConnectionStats", "s", "org.tavo.Model1"};
    EXPECT_THAT(call("root", question, statistics), HasSubstr("\"OutgoingBytes\" u "));
    EXPECT_THAT(call("nobody", question, statistics), HasSubstr("Access denied"));
}

TEST_F(DbusPolicyTest, LetsTheHostServeNotificationsButNotEveryoneNotify)
{
    EXPECT_TRUE(
        waitFor([this] { return log().contains("Serving org.freedesktop.Notifications"); }));
    const QStringList capabilities{"GetCapabilities"};
    EXPECT_EQ(call("root", capabilities, notifications), "as 3 \"actions\" \"body\" \"sound\"");
    EXPECT_THAT(call("nobody", capabilities, notifications), HasSubstr("Access denied"));
}
} // namespace
