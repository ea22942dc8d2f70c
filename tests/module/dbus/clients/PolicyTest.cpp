// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The policy that is installed for the system bus, on a bus that otherwise allows nothing.

#include "module/dbus/ModelTest.h"
#include "support/bus/BusUser.h"
#include "support/bus/ClientProgram.h"
#include "support/bus/NotifyArguments.h"
#include "support/bus/SilentClient.h"

#include <QFile>

#include <sys/stat.h>

namespace {
using testing::HasSubstr;
using testing::StartsWith;

/// The policy, with this group in place of tavo-host, which may not exist here.
QString policyFor(const char *group)
{
    QFile file(QStringLiteral(INTERFACE_FOLDER "/org.tavo.Model1.conf"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    const int start = text.indexOf("<policy"_s);
    return text.mid(start, text.indexOf("</busconfig>"_s) - start)
        .replace("group=\"tavo-host\""_s, "group=\"%1\""_s.arg(QLatin1String(group)));
}

class DbusPolicyTest : public testing::Test
{
protected:
    DbusPolicyTest()
        : m_bus("<policy context=\"default\"><allow user=\"*\"/><deny own=\"*\"/>"
                "<deny send_type=\"method_call\"/>"
                "<allow send_destination=\"org.freedesktop.DBus\"/>"
                "<deny send_destination=\"org.freedesktop.DBus\" "
                "send_interface=\"org.freedesktop.DBus.Debug.Stats\"/>"
                "<allow send_type=\"signal\"/></policy>" +
                policyFor(permittedGroup))
    {
    }

    void SetUp() override
    {
        if (!BusUser::canBeAnyone()) {
            GTEST_SKIP() << "only root can act as another user";
        }
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
        // Other users must reach the socket.
        ::chmod(QFile::encodeName(m_bus.folder()).constData(), 0755);
        m_module =
            std::make_unique<LoadedModule>(MODULE_FILE, "dbus", QVariantHash{{"bus", "session"_s}});
        m_value = CMValueNode::create(&m_nodes, CMPath("/test/value"_s));
        CMActivateNode *display =
            CMActivateNode::create(&m_nodes, TavoNotificationDisplayOpenPath());
        display->doSetInvoke([this](CMActivateNode *node) {
            tavoConnect(
                node, &CMActivateNode::privateInvoke, &m_display,
                [](const CMSetDataRequest &request) { request.reply().setValue({}); },
                Qt::QueuedConnection);
        });
        ASSERT_TRUE(isServing());
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

    /// A client that runs as the user and is only in this group.
    std::unique_ptr<ModelClient> clientOf(const char *user, const char *group = "nogroup")
    {
        const ActAs otherUser(BusUser::find(user, group));
        return std::make_unique<ModelClient>(m_bus.address());
    }

    static BusCall call(ModelClient &client, const char *method, const BusClient::Write &write)
    {
        client.setTarget("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                         "org.freedesktop.Notifications");
        return client.call(method, write);
    }

    std::string uniqueName()
    {
        ModelClient asking(m_bus.address());
        const BusCall owner = asking.callBus(
            "GetNameOwner", [](BusWriter &writer) { writer.writeString("org.tavo.Model1"_s); });
        return owner.text().toStdString();
    }

    bool isServing()
    {
        return waitFor([this] { return log().contains("Serving org.freedesktop.Notifications"); });
    }

    QString address() const { return m_bus.address(); }

    LogCapture &log() { return m_log; }

    static constexpr const char *permittedGroup = "games";
    const QStringList notifications{"org.freedesktop.Notifications",
                                    "/org/freedesktop/Notifications",
                                    "org.freedesktop.Notifications"};

    CMValueNode *m_value = nullptr;

private:
    PrivateBus m_bus;
    LogCapture m_log{"Dbus"};
    std::unique_ptr<LoadedModule> m_module;
    QObject m_display;
    CMNodes m_nodes;
};

TEST_F(DbusPolicyTest, LetsOthersReachNoMethod)
{
    const auto outsider = clientOf("nobody");
    const std::vector<std::pair<std::string, std::string>> methods{
        {"org.freedesktop.DBus.Introspectable", "Introspect"},
        {"org.freedesktop.DBus.Peer", "Ping"},
        {"org.freedesktop.DBus.Peer", "GetMachineId"},
        {"org.freedesktop.DBus.Properties", "Get"},
        {"org.freedesktop.DBus.Properties", "GetAll"},
        {"org.freedesktop.DBus.ObjectManager", "GetManagedObjects"},
        {"org.freedesktop.Notifications", "Notify"},
        {"org.tavo.Model1", "GetValue"},
        {"org.tavo.Model1", "NoSuchMethod"}};
    for (const std::string &host : {std::string("org.tavo.Model1"),
                                    std::string("org.freedesktop.Notifications"), uniqueName()}) {
        for (const auto &[interface, method] : methods) {
            outsider->setTarget(host, "/org/tavo/Model1", interface);
            const BusCall call = outsider->call(method);
            EXPECT_EQ(call.errorName(), accessDenied) << host << ' ' << method;
            EXPECT_TRUE(call.reply().isFromBus()) << host << ' ' << method;
        }
    }
}

TEST_F(DbusPolicyTest, LetsOthersReceiveNoSignal)
{
    const auto outsider = clientOf("nobody");
    const auto member = clientOf("daemon", permittedGroup);
    std::vector<std::string> heard;
    for (ModelClient *listener : {outsider.get(), member.get()}) {
        listener->listen("type='signal',interface='org.freedesktop.Notifications'",
                         [&heard, listener](const BusMessage &signal) {
                             heard.push_back(listener->name() + ' ' + signal.member());
                         });
        // The reply comes after the rule is in force.
        ASSERT_TRUE(listener->callBus("GetId", [](BusWriter &) {}).succeeds());
    }
    const BusCall id =
        call(*member, "Notify", [](BusWriter &writer) { NotifyArguments{}.writeTo(writer); });
    const std::uint32_t notification = id.reader().readUInt32();
    ASSERT_TRUE(call(*member, "CloseNotification", [&](BusWriter &writer) {
                    writer.writeUInt32(notification);
                }).succeeds());
    ASSERT_TRUE(waitFor([&] { return !heard.empty(); }));
    // The reply comes after all signals that the bus has passed on.
    ASSERT_TRUE(outsider->callBus("GetId", [](BusWriter &) {}).succeeds());
    EXPECT_THAT(heard, testing::ElementsAre(member->name() + " NotificationClosed"));
}

TEST_F(DbusPolicyTest, LetsMembersOfTheGroupDoEverything)
{
    const auto member = clientOf("daemon", permittedGroup);
    EXPECT_TRUE(member->getValue("/test/value"_s).succeeds());
    EXPECT_TRUE(member->ask("OpenInbox").succeeds());
    ASSERT_TRUE(member->subscribe("/test/value"_s, "value"_s).succeeds());
    m_value->setValue(TavoValue().setInt_(5));
    EXPECT_TRUE(member->waitForSignals(1));
}

TEST_F(DbusPolicyTest, LetsNobodySendSignalsToTheHost)
{
    for (const BusUser &user : {BusUser::find("nobody"), BusUser::find("daemon", permittedGroup),
                                BusUser::find("root")}) {
        SilentClient sender = [&] {
            const ActAs otherUser(user);
            return SilentClient(address());
        }();
        sender.sendSignal(uniqueName());
        EXPECT_EQ(sender.read(1)[accessDenied], 1) << user.uid;
    }
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

TEST_F(DbusPolicyTest, LetsTheHostServeNotificationsAndStrangersSendNone)
{
    EXPECT_TRUE(
        waitFor([this] { return log().contains("Serving org.freedesktop.Notifications"); }));
    const QStringList capabilities{"GetCapabilities"};
    EXPECT_THAT(call("root", capabilities, notifications), HasSubstr("\"body\""));
    EXPECT_THAT(call("nobody", capabilities, notifications), HasSubstr("Access denied"));
}
} // namespace
