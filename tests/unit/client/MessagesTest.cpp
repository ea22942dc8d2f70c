// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientTest.h"

#include <client/TavoMessages.h>

#include <sdbus-c++/sdbus-c++.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {
using Hints = std::map<std::string, sdbus::Variant>;

/// A host of which nothing is there but its desktop notifications; served by a thread of its own.
class DesktopService
{
public:
    struct Notification
    {
        std::string application, title, text;
        Hints hints;
        std::int32_t timeout;
    };

    explicit DesktopService(const std::string &address)
        : m_connection(sdbus::createSessionBusConnectionWithAddress(address))
        , m_object(sdbus::createObject(*m_connection, "/org/freedesktop/Notifications"))
    {
        const std::string interface = "org.freedesktop.Notifications";
        m_object->registerMethod("Notify").onInterface(interface).implementedAs(
            [this](const std::string &application, const std::uint32_t &, const std::string &,
                   const std::string &title, const std::string &text,
                   const std::vector<std::string> &, const Hints &hints,
                   const std::int32_t &timeout) {
                m_shown.push_back({application, title, text, hints, timeout});
                return std::uint32_t(m_shown.size());
            });
        m_object->registerMethod("CloseNotification")
            .onInterface(interface)
            .implementedAs([this](const std::uint32_t &id) { emitClosed(id, 3); });
        m_object->registerSignal("NotificationClosed")
            .onInterface(interface)
            .withParameters<std::uint32_t, std::uint32_t>();
        m_object->finishRegistration();
        m_connection->requestName("org.tavo.Model1");
        m_connection->enterEventLoopAsync();
    }

    void takeDesktopsName() { m_connection->requestName("org.freedesktop.Notifications"); }

    void emitClosed(std::uint32_t id, std::uint32_t reason)
    {
        m_object->emitSignal("NotificationClosed")
            .onInterface("org.freedesktop.Notifications")
            .withArguments(id, reason);
    }

    /// To be read when an answer has shown that the thread is through with it.
    const std::vector<Notification> &shown() const { return m_shown; }

private:
    std::vector<Notification> m_shown;
    std::unique_ptr<sdbus::IConnection> m_connection;
    std::unique_ptr<sdbus::IObject> m_object;
};
} // namespace

class MessagesTest : public ClientTest
{
protected:
    DesktopService m_desktop{m_bus.address().toStdString()};
    TavoMessages m_messages{&connectedClient()};
};

TEST_F(MessagesTest, ShowsAMessageWithAllThatItHolds)
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
    EXPECT_EQ(shown.application, "door");
    EXPECT_EQ(shown.title, "Door");
    EXPECT_EQ(shown.text, "a &lt; b &amp; c") << "the interface takes markup";
    EXPECT_EQ(shown.timeout, 3000);
    EXPECT_EQ(shown.hints.at("urgency").get<std::uint8_t>(), 2);
    EXPECT_EQ(shown.hints.at("x-tavo-priority").get<std::int32_t>(), 3);
}

TEST_F(MessagesTest, LeavesTheTimeToTheHostUnlessToldOtherwise)
{
    ASSERT_TRUE(succeeds(m_messages.show({"Door", "", TavoMessage::defaultTimeout, {}, ""})));
    EXPECT_EQ(m_desktop.shown().at(0).timeout, -1);
}

TEST_F(MessagesTest, TellsHowAMessageEnded)
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

TEST_F(MessagesTest, TellsWhetherTheHostIsTheServerOfTheDesktop)
{
    const auto nobody = m_messages.isDesktopServer();
    EXPECT_TRUE(errorOf(nobody).isError());
    const auto another =
        sdbus::createSessionBusConnectionWithAddress(m_bus.address().toStdString());
    another->requestName("org.freedesktop.Notifications");
    const auto other = m_messages.isDesktopServer();
    ASSERT_TRUE(succeeds(other));
    EXPECT_FALSE(other.value());
    another->releaseName("org.freedesktop.Notifications");
    m_desktop.takeDesktopsName();
    const auto own = m_messages.isDesktopServer();
    ASSERT_TRUE(succeeds(own));
    EXPECT_TRUE(own.value());
}

TEST_F(MessagesTest, AHostWithoutThemIsAnError)
{
    PrivateBus bare;
    QVariantHash config{{"bus", bare.address()}, {"notifications", false}};
    const LoadedModule module(TAVO_DBUS_MODULE, "dbus", config);
    TavoClient client(bare.address());
    TavoMessages messages(&client);
    ASSERT_TRUE(waitFor([&] { return client.isAvailable(); }));
    EXPECT_TRUE(errorOf(messages.show({"Door", "", 0, {}, ""})).isError());
}
