// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientTest.h"
#include "support/bus/BusClient.h"
#include <client/TavoMessages.h>

#include <memory>
#include <vector>

namespace {
/// A host that serves only desktop notifications.
class DesktopService
{
public:
    struct Notification
    {
        QString application, title, text;
        QVariantHash hints;
        int timeout;
    };

    explicit DesktopService(const QString &address)
        : m_client(address)
        , m_object(m_client.connection().createObject(BusInterface::notifications()))
    {
        m_object->setMethod("Notify", [this](const BusMessage &call) { notify(call); });
        m_object->setMethod("CloseNotification", [this](const BusMessage &call) {
            emitClosed(BusReader(call).readUInt32(), 3);
            call.createReply().send();
        });
        for (const char *unused :
             {"GetCapabilities", "GetServerInformation", "Inhibit", "UnInhibit"}) {
            m_object->setMethod(unused,
                                [](const BusMessage &) { throw BusError::failed("unused"); });
        }
        m_object->setProperty("Inhibited", [] { return QVariant(false); });
        m_client.serve(*m_object);
        m_client.takeName("org.tavo.Model1"_s);
    }

    void takeDesktopsName() { m_client.takeName("org.freedesktop.Notifications"_s); }

    void emitClosed(std::uint32_t id, std::uint32_t reason)
    {
        BusWriter signal(m_object->createSignal("NotificationClosed"));
        signal.writeUInt32(id);
        signal.writeUInt32(reason);
        signal.message().send();
    }

    const std::vector<Notification> &shown() const { return m_shown; }

private:
    void notify(const BusMessage &call)
    {
        Notification shown;
        BusReader reader(call);
        shown.application = reader.readString();
        reader.readUInt32(); // the notification that is replaced
        reader.readString(); // the icon
        shown.title = reader.readString();
        shown.text = reader.readString();
        reader.readStringList(); // the actions
        reader.enterArray("{sv}");
        while (!reader.isAtEnd()) {
            reader.enterDictEntry("sv");
            const QString name = reader.readString();
            shown.hints.insert(name, reader.readVariant());
            reader.leave();
        }
        reader.leave();
        shown.timeout = reader.readInt32();
        m_shown.push_back(shown);
        BusWriter reply(call.createReply());
        reply.writeUInt32(std::uint32_t(m_shown.size()));
        reply.message().send();
    }

    std::vector<Notification> m_shown;
    BusClient m_client;
    std::unique_ptr<BusObject> m_object;
};
} // namespace

class MessagesTest : public ClientTest
{
protected:
    DesktopService m_desktop{m_bus.address()};
    TavoMessages m_messages{&connectedClient()};
};

TEST_F(MessagesTest, SendsAllFieldsOfAMessage)
{
    TavoMessage message;
    message.application = "door";
    message.title = "Door";
    message.text = "a < b & c";
    message.timeout = 3000;
    message.priority = TavoNotificationItemPriority::Urgent;
    const auto reply = m_messages.show(message);
    ASSERT_TRUE(succeeds(reply));
    EXPECT_EQ(reply.value(), 1U);
    const auto &shown = m_desktop.shown().at(0);
    EXPECT_EQ(shown.application, "door"_s);
    EXPECT_EQ(shown.title, "Door"_s);
    EXPECT_EQ(shown.text, "a &lt; b &amp; c"_s) << "the interface takes markup";
    EXPECT_EQ(shown.timeout, 3000);
    EXPECT_EQ(shown.hints.value("urgency"_s), QVariant::fromValue(uchar(2)));
    EXPECT_EQ(shown.hints.value("x-tavo-priority"_s), QVariant(3));
}

TEST_F(MessagesTest, UsesTheHostsTimeoutByDefault)
{
    ASSERT_TRUE(succeeds(m_messages.show({"Door", "", TavoMessage::defaultTimeout, {}, ""})));
    EXPECT_EQ(m_desktop.shown().at(0).timeout, -1);
}

TEST_F(MessagesTest, ReportsHowAMessageEnded)
{
    std::vector<std::pair<uint, TavoMessages::End>> ends;
    QObject::connect(&m_messages, &TavoMessages::closed,
                     [&](uint id, TavoMessages::End end) { ends.emplace_back(id, end); });
    m_desktop.emitClosed(1, 1);
    m_desktop.emitClosed(2, 2);
    m_desktop.emitClosed(3, 3);
    m_desktop.emitClosed(4, 77);
    ASSERT_TRUE(waitFor([&] { return ends.size() == 4; }));
    using End = TavoMessages::End;
    EXPECT_THAT(ends,
                testing::ElementsAre(std::pair(1U, End::Expired), std::pair(2U, End::Dismissed),
                                     std::pair(3U, End::Closed), std::pair(4U, End::Unknown)));
}

TEST_F(MessagesTest, ClosesAMessage)
{
    uint closed = 0;
    QObject::connect(&m_messages, &TavoMessages::closed,
                     [&](uint id, TavoMessages::End) { closed = id; });
    ASSERT_TRUE(succeeds(m_messages.close(7)));
    EXPECT_TRUE(waitFor([&] { return closed == 7; }));
}

TEST_F(MessagesTest, KnowsWhetherTheHostIsTheDesktopsServer)
{
    const auto nobody = m_messages.isDesktopServer();
    EXPECT_TRUE(errorOf(nobody).isError());
    BusClient another(m_bus.address());
    another.takeName("org.freedesktop.Notifications"_s);
    const auto other = m_messages.isDesktopServer();
    ASSERT_TRUE(succeeds(other));
    EXPECT_FALSE(other.value());
    another.releaseName("org.freedesktop.Notifications"_s);
    m_desktop.takeDesktopsName();
    const auto own = m_messages.isDesktopServer();
    ASSERT_TRUE(succeeds(own));
    EXPECT_TRUE(own.value());
}

TEST_F(MessagesTest, FailsIfTheHostDoesNotServeMessages)
{
    PrivateBus bare;
    QVariantHash config{{"bus", bare.address()}, {"notifications", false}};
    const LoadedModule module(TAVO_DBUS_MODULE, "dbus", config);
    TavoClient client(bare.address());
    TavoMessages messages(&client);
    ASSERT_TRUE(waitFor([&] { return client.isAvailable(); }));
    EXPECT_TRUE(errorOf(messages.show({"Door", "", 0, {}, ""})).isError());
}
