// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DesktopTest.h"
#include "support/bus/BusClient.h"
#include "support/bus/NotifyArguments.h"

#include <string>
#include <utility>
#include <vector>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

/// Closing, as another program on the bus learns of it.
class ClosingTest : public DesktopTest
{
protected:
    ClosingTest()
        : DesktopTest({{"defaultTimeout"_s, 300}})
    {
    }

    bool isReported(quint32 id, int reason) { return m_monitor->writes(closedSignal(id, reason)); }
    int reports() { return m_monitor->output().count("NotificationClosed"_s); }
    QString output() { return m_monitor->output(); }
    ClientProgram &monitored() { return *m_monitor; }

private:
    std::unique_ptr<ClientProgram> m_monitor = monitor();
};

TEST_F(ClosingTest, IsReportedAsExpiredAfterTheDefaultTimeout)
{
    EXPECT_TRUE(isReported(notifySend({"Title"_s}), 1));
    EXPECT_TRUE(isReported(notifySend({"-t"_s, "-1"_s, "Title"_s}), 1));
}

TEST_F(ClosingTest, IsReportedAsExpiredAfterItsOwnTimeout)
{
    EXPECT_TRUE(isReported(notifySend({"-t"_s, "500"_s, "Title"_s}), 1));
}

TEST_F(ClosingTest, NeverHappensByItselfWithATimeoutOfZero)
{
    const quint32 id = notifySend({"-t"_s, "0"_s, "Title"_s});
    waitFor([] { return false; }, std::chrono::milliseconds(700));
    EXPECT_TRUE(isOpen(id));
    EXPECT_EQ(reports(), 0);
}

TEST_F(ClosingTest, NeverHappensByItselfToACriticalNotification)
{
    const quint32 id = notifySend({"-u"_s, "critical"_s, "Title"_s});
    waitFor([] { return false; }, std::chrono::milliseconds(700));
    EXPECT_TRUE(isOpen(id));
    EXPECT_TRUE(isReported(
        notifySend({"-u"_s, "critical"_s, "-r"_s, QString::number(id), "-t"_s, "100"_s, "Title"_s}),
        1));
}

TEST_F(ClosingTest, IsReportedAsDismissedWhenAPersonClosesTheNode)
{
    const quint32 id = notifySend({"-t"_s, "60000"_s, "Title"_s});
    CMSubscribe::closeNode(pathOf(id));
    EXPECT_TRUE(isReported(id, 2));
}

TEST_F(ClosingTest, IsReportedAsClosedForACall)
{
    const quint32 id = notifySend({"-t"_s, "60000"_s, "Title"_s});
    EXPECT_EQ(result("CloseNotification"_s, {QString::number(id)}), "()"_s);
    EXPECT_TRUE(isReported(id, 3));
    EXPECT_FALSE(isOpen(id));
    EXPECT_TRUE(waitFor([] { return displayed().isEmpty(); }));
}

TEST_F(ClosingTest, IsReportedAsClosedForTheDisplaysCancelRequest)
{
    const quint32 id = notifySend({"-t"_s, "60000"_s, "Title"_s});
    settle();
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(pathOf(id)),
                     {});
    EXPECT_TRUE(isReported(id, 3));
}

TEST_F(ClosingTest, FollowsTheActionThatCausesIt)
{
    ClientProgram program(bus(), "notify-send"_s,
                          {"-t"_s, "0"_s, "-A"_s, "key=Label"_s, "Title"_s});
    ASSERT_TRUE(waitFor([&] { return isOpen(1); }, std::chrono::seconds(20)));
    CMRoot()->invoke(rowOf(1, 1).path(), QVariant("token"_s), {});
    ASSERT_TRUE(isReported(1, 2));
    const int action = output().indexOf("ActionInvoked (uint32 1, 'key')"_s);
    const int closed = output().indexOf(closedSignal(1, 2));
    EXPECT_GE(action, 0);
    EXPECT_GT(closed, action);
}

/// A client that records the signals that it gets.
class Listener
{
public:
    explicit Listener(const QString &address)
        : m_client(address)
    {
        m_client.listen("type='signal',interface='" + std::string(name) + '\'',
                        [this](const BusMessage &signal) { takeDown(signal); });
    }

    BusCall notify(int timeout = 0, quint32 replacedId = 0)
    {
        return m_client.setTarget(name, "/org/freedesktop/Notifications", name)
            .call("Notify", [timeout, replacedId](BusWriter &writer) {
                NotifyArguments{replacedId, timeout, {}, {"key", "Label"}}.writeTo(writer);
            });
    }
    /// Requests the display to close the notification at the path.
    BusCall cancel(const QVariant &value)
    {
        return m_client.setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1")
            .call("Call", [&value](BusWriter &writer) {
                writer.writeString(TavoNotificationDisplayCancelNotifyPath().toString());
                writer.writeVariant(value);
            });
    }
    bool hearsOfTheEnd() const
    {
        return waitFor(
            [this] { return !m_received.empty() && m_received.back() == "NotificationClosed"; });
    }
    const std::vector<std::string> &received() const { return m_received; }

    /// The ids of closed notifications, each with its reason.
    using Ends = std::vector<std::pair<quint32, quint32>>;
    const Ends &ends() const { return m_ends; }

private:
    static constexpr const char *name = "org.freedesktop.Notifications";

    void takeDown(const BusMessage &signal)
    {
        m_received.push_back(signal.member());
        if (m_received.back() == "ActivationToken") {
            BusReader reader(signal);
            reader.readUInt32(); // the id
            m_received.back() += ' ' + reader.readString().toStdString();
        } else if (m_received.back() == "NotificationClosed") {
            BusReader reader(signal);
            const quint32 id = reader.readUInt32();
            m_ends.emplace_back(id, reader.readUInt32());
        }
    }

    BusClient m_client;
    std::vector<std::string> m_received;
    Ends m_ends;
};

TEST_F(ClosingTest, FollowsTheTokenThatOnlyItsClientGets)
{
    Listener client(bus().address());
    Listener other(bus().address());
    ASSERT_TRUE(client.notify().succeeds());
    CMRoot()->invoke(rowOf(1, 1).path(), QVariant("token"_s), {});
    ASSERT_TRUE(client.hearsOfTheEnd());
    EXPECT_THAT(client.received(),
                ElementsAre("ActivationToken token", "ActionInvoked", "NotificationClosed"));
    ASSERT_TRUE(other.hearsOfTheEnd());
    EXPECT_THAT(other.received(), ElementsAre("ActionInvoked", "NotificationClosed"));
}

TEST_F(ClosingTest, IsReportedOnlyToItsClientOnABusThatUsersShare)
{
    shareBus();
    Listener client(bus().address());
    Listener other(bus().address());
    ASSERT_TRUE(client.notify().succeeds());
    CMRoot()->invoke(rowOf(1, 1).path(), QVariant("token"_s), {});
    ASSERT_TRUE(client.hearsOfTheEnd());
    EXPECT_THAT(client.received(),
                ElementsAre("ActivationToken token", "ActionInvoked", "NotificationClosed"));
    // Its own signals come after those of the first notification.
    ASSERT_TRUE(other.notify().succeeds());
    CMSubscribe::closeNode(pathOf(2));
    ASSERT_TRUE(other.hearsOfTheEnd());
    EXPECT_THAT(other.received(), ElementsAre("NotificationClosed"));
    EXPECT_EQ(client.received().size(), 3U);
}

TEST_F(ClosingTest, IsReportedToAClientWhoseNotificationAnotherTakesOver)
{
    shareBus();
    Listener client(bus().address());
    Listener other(bus().address());
    ASSERT_TRUE(client.notify().succeeds());
    ASSERT_TRUE(client.notify(0, 1).succeeds());
    ASSERT_TRUE(other.notify(0, 1).succeeds());
    // Otherwise it would wait for an end that only the other client hears of.
    ASSERT_TRUE(client.hearsOfTheEnd());
    EXPECT_THAT(client.ends(), ElementsAre(std::pair(1, 4)));
    CMSubscribe::closeNode(pathOf(1));
    ASSERT_TRUE(other.hearsOfTheEnd());
    EXPECT_THAT(other.ends(), ElementsAre(std::pair(1, 2)));
    EXPECT_EQ(client.ends().size(), 1U);
}

TEST_F(ClosingTest, IsReportedAsClosedForACancelOverTheBusHoweverLate)
{
    Listener client(bus().address());
    client.notify(400);
    client.notify(400);
    const BusCall first = client.cancel(TavoValue().setPath(pathOf(1)).__variant());
    const BusCall second = client.cancel(pathOf(2).toString());
    EXPECT_TRUE(first.succeeds());
    EXPECT_TRUE(second.succeeds());
    EXPECT_EQ(client.cancel(pathOf(2).toString()).errorName(), "org.tavo.Error.Notifications");
    EXPECT_THAT(client.ends(), ElementsAre(std::pair(1, 3), std::pair(2, 3)));
    EXPECT_TRUE(displayed().isEmpty());
}

TEST_F(ClosingTest, IsNotReportedForACancelOfAnotherNodeOfThatName)
{
    Listener client(bus().address());
    ASSERT_TRUE(client.notify().succeeds());
    EXPECT_EQ(client.cancel("/another/1"_s).errorName(), "org.tavo.Error.Notifications");
    EXPECT_TRUE(isOpen(1));
}

/// A program that waits for the end of its notification must end, too.
TEST_F(ClosingTest, IsReportedWhenTheModuleEnds)
{
    ClientProgram program(bus(), "notify-send"_s, {"--wait"_s, "-t"_s, "0"_s, "Title"_s});
    ASSERT_TRUE(waitFor([&] { return isOpen(1); }, std::chrono::seconds(20)));
    unload();
    EXPECT_TRUE(program.succeeds()) << program.errors().toStdString();
    EXPECT_TRUE(isReported(1, 4));
    // The display does not go on showing nodes that are gone.
    EXPECT_TRUE(waitFor([] { return displayed().isEmpty(); }));
}

TEST_F(ClosingTest, IsReportedOfAllWhenTheModuleEnds)
{
    constexpr std::size_t many = 900;
    Listener client(bus().address());
    for (std::size_t i = 0; i < many; ++i) {
        client.notify();
    }
    ASSERT_TRUE(client.notify().succeeds());
    unload();
    ASSERT_TRUE(waitFor([&] { return client.ends().size() > many; }, std::chrono::seconds(20)));
    for (const auto &[id, reason] : client.ends()) {
        EXPECT_EQ(reason, 4U) << id;
    }
}

TEST_F(ClosingTest, IsReportedOnce)
{
    const quint32 id = notifySend({"-t"_s, "0"_s, "Title"_s});
    CMSubscribe::closeNode(pathOf(id));
    ASSERT_TRUE(isReported(id, 2));
    EXPECT_TRUE(result("CloseNotification"_s, {QString::number(id)})
                    .contains("org.freedesktop.Notifications.InvalidId"_s));
    notifySend({"Last"_s});
    ASSERT_TRUE(isReported(id + 1, 1));
    EXPECT_EQ(reports(), 2);
}

TEST_F(ClosingTest, LeavesNothingInTheModel)
{
    const quint32 id = notifySend({"Title"_s, "Text"_s});
    ASSERT_TRUE(isReported(id, 1));
    EXPECT_THAT(CMCatalog::tree(CMPath("/dbus/notifications"_s)), IsEmpty());
    EXPECT_THAT(CMCatalog::tree(TavoNotificationDisplaySimpleMessageNodePath()), IsEmpty());
}
} // namespace
