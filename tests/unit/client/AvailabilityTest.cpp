// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientTest.h"
#include "support/bus/BusClient.h"
#include "support/bus/SilentBus.h"

#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {
/// Longer than a connection waits for a silent bus.
constexpr std::chrono::seconds timeout(20);
} // namespace

class ClientAvailabilityTest : public ClientTest
{
protected:
    /// A client, and a record of its signals.
    TavoClient &watchedClient()
    {
        TavoClient &client = makeClient();
        QObject::connect(&client, &TavoClient::availableChanged,
                         [this](bool available) { m_changes.push_back(available); });
        return client;
    }

    bool waitForChanges(std::size_t count)
    {
        return waitFor([&] { return m_changes.size() >= count; });
    }

    std::vector<bool> m_changes;
};

TEST_F(ClientAvailabilityTest, ReportsThatAHostIsThere)
{
    startHost();
    const TavoClient &client = watchedClient();
    EXPECT_FALSE(client.isAvailable());
    ASSERT_TRUE(waitFor([&] { return client.isAvailable(); }));
    EXPECT_TRUE(m_changes.back());
    EXPECT_EQ(client.unavailableReason(), ""_s);
}

TEST_F(ClientAvailabilityTest, ReportsOnceThatThereIsNoHost)
{
    const TavoClient &client = watchedClient();
    ASSERT_TRUE(waitForChanges(1));
    settle();
    EXPECT_THAT(m_changes, ElementsAre(false));
    EXPECT_THAT(client.unavailableReason().toStdString(), HasSubstr("No host"));
}

TEST_F(ClientAvailabilityTest, ReportsThatThereIsNoBus)
{
    m_bus.stop();
    const TavoClient &client = watchedClient();
    ASSERT_TRUE(waitForChanges(1));
    EXPECT_THAT(m_changes, ElementsAre(false));
    EXPECT_NE(client.unavailableReason(), ""_s);
}

TEST_F(ClientAvailabilityTest, ReportsASilentBusAndFindsTheHostWhenTheBusResumes)
{
    startHost();
    ASSERT_TRUE(succeeds(connectedClient().list()));
    m_bus.pause();
    const TavoClient &client = watchedClient();
    ASSERT_TRUE(waitFor([&] { return !m_changes.empty(); }, timeout));
    EXPECT_THAT(m_changes, ElementsAre(false));
    EXPECT_THAT(client.unavailableReason().toStdString(), HasSubstr("does not answer"));
    m_bus.resume();
    EXPECT_TRUE(waitFor([&] { return client.isAvailable(); }, timeout));
}

TEST_F(ClientAvailabilityTest, BelievesOnlyTheBusThatTheHostHasGone)
{
    startHost();
    TavoClient &client = watchedClient();
    // The client may have connected before the host owned its name.
    ASSERT_TRUE(waitFor([&] { return client.isAvailable(); }));
    m_changes.clear();
    BusClient other(m_bus.address());
    other.setTarget("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus");
    const BusInterface interface {
        "/org/freedesktop/DBus", "org.freedesktop.DBus"
    };
    for (const QString &name : other.call("ListNames").reader().readStringList()) {
        other.sendSignal(interface, "NameOwnerChanged", name.toStdString(),
                         [&name](BusWriter &forged) {
                             forged.writeString("org.tavo.Model1"_s);
                             forged.writeString(name);
                             forged.writeString({});
                         });
    }
    // When the bus replies, it has already passed the signals on, so the client gets them before this
    // reply.
    ASSERT_TRUE(other.call("GetId").succeeds());
    ASSERT_TRUE(succeeds(client.version()));
    EXPECT_THAT(m_changes, testing::IsEmpty());
}

TEST_F(ClientAvailabilityTest, FindsAHostThatStartsLater)
{
    watchedClient();
    ASSERT_TRUE(waitForChanges(1));
    startHost();
    ASSERT_TRUE(waitForChanges(2));
    EXPECT_THAT(m_changes, ElementsAre(false, true));
}

TEST_F(ClientAvailabilityTest, FindsAHostThatIsRestarted)
{
    startHost();
    watchedClient();
    ASSERT_TRUE(waitFor([&] { return !m_changes.empty() && m_changes.back(); }));
    m_changes.clear();
    stopHost();
    ASSERT_TRUE(waitForChanges(1));
    startHost();
    ASSERT_TRUE(waitForChanges(2));
    EXPECT_THAT(m_changes, ElementsAre(false, true));
}

TEST_F(ClientAvailabilityTest, FindsTheHostAfterTheBusIsRestarted)
{
    startHost();
    TavoClient &client = watchedClient();
    ASSERT_TRUE(waitFor([&] { return client.isAvailable(); }));
    m_changes.clear();
    m_bus.restart();
    ASSERT_TRUE(waitFor([&] { return !m_changes.empty() && m_changes.back(); }));
    m_service.publish(path("/door/state"), TavoValue().setBool_(true));
    EXPECT_TRUE(succeeds(client.getValue(path("/door/state"))));
}

TEST_F(ClientAvailabilityTest, ARequestMadeBeforeTheBusWasTriedIsSent)
{
    startHost();
    ASSERT_TRUE(succeeds(connectedClient().list()));
    m_service.publish(path("/door/state"), TavoValue().setBool_(true));
    TavoClient early(m_bus.address());
    EXPECT_TRUE(succeeds(early.getValue(path("/door/state"))));
}

TEST_F(ClientAvailabilityTest, ARequestWithoutAHostFailsWithNoHost)
{
    EXPECT_EQ(errorOf(makeClient().getValue(path("/door/state"))).name(),
              TavoClientError::noHost());
}

TEST_F(ClientAvailabilityTest, ARequestWithoutABusFailsWithNoBus)
{
    m_bus.stop();
    TavoClient &client = makeClient();
    EXPECT_EQ(errorOf(client.getValue(path("/early"))).name(), TavoClientError::noBus());
    const auto late = client.getValue(path("/late"));
    EXPECT_FALSE(late.isFinished()) << "answers come from the event loop";
    EXPECT_EQ(errorOf(late).name(), TavoClientError::noBus());
}

TEST_F(ClientAvailabilityTest, ARequestToASilentBusFailsAtItsTimeout)
{
    for (const auto after : {SilentBus::After::Connecting, SilentBus::After::Authenticating,
                             SilentBus::After::Greeting}) {
        const SilentBus silent(after);
        TavoClient client(silent.address());
        client.setTimeout(200);
        const auto reply = client.getValue(path("/door/state"));
        EXPECT_EQ(errorOf(reply).name(), TavoClientError::busTimedOut());
        EXPECT_EQ(silent.connections(), 1);
    }
}

TEST_F(ClientAvailabilityTest, ARequestFailsAtOnceIfTheBusIsKnownToBeSilent)
{
    const SilentBus silent(SilentBus::After::Greeting);
    TavoClient client(silent.address());
    EXPECT_TRUE(waitFor([&] { return client.unavailableReason() != ""_s; }, timeout));
    const auto late = client.getValue(path("/late"));
    EXPECT_FALSE(late.isFinished()) << "answers come from the event loop";
    EXPECT_EQ(errorOf(late).name(), TavoClientError::busTimedOut());
}

TEST_F(ClientAvailabilityTest, ARequestGetsTheHostsReplyIfTheBusResumesInTime)
{
    startHost();
    m_service.publish(path("/door/state"), TavoValue().setBool_(true));
    TavoClient &client = connectedClient();
    m_bus.pause();
    const auto reply = client.getValue(path("/door/state"));
    TavoClient early(m_bus.address());
    const auto held = early.getValue(path("/door/state"));
    EXPECT_FALSE(waitFor([&] { return reply.isFinished() || held.isFinished(); },
                         std::chrono::milliseconds(200)));
    m_bus.resume();
    EXPECT_TRUE(succeeds(reply));
    EXPECT_TRUE(succeeds(held));
}

TEST_F(ClientAvailabilityTest, ARequestWhoseHostEndsFailsWithNoAnswer)
{
    startHost();
    m_service.take(path("/slow"), ScriptedService::keep());
    const auto reply = connectedClient().call(path("/slow"));
    ASSERT_TRUE(waitFor([&] { return m_service.count(path("/slow")) == 1; }));
    stopHost();
    EXPECT_EQ(errorOf(reply).name(), CMErrors::noAnswer());
}

TEST_F(ClientAvailabilityTest, ARequestWhoseBusEndsFailsWithNoAnswer)
{
    startHost();
    m_service.take(path("/slow"), ScriptedService::keep());
    const auto reply = connectedClient().call(path("/slow"));
    ASSERT_TRUE(waitFor([&] { return m_service.count(path("/slow")) == 1; }));
    m_bus.stop();
    EXPECT_EQ(errorOf(reply).name(), CMErrors::noAnswer());
}

TEST_F(ClientAvailabilityTest, ARequestMadeWhileTheBusEndsFailsToo)
{
    startHost();
    m_service.take(path("/slow"), ScriptedService::keep());
    TavoClient &client = connectedClient();
    CMReply<QVariant> again;
    QObject context;
    client.call(path("/slow")).onFinished(&context, [&](const CMReply<QVariant> &) {
        again = client.call(path("/slow"));
    });
    ASSERT_TRUE(waitFor([&] { return m_service.count(path("/slow")) == 1; }));
    m_bus.stop();
    EXPECT_TRUE(errorOf(again).isError());
}

TEST_F(ClientAvailabilityTest, ARequestIsFinishedAtTheLatestWhenTheClientIsDestroyed)
{
    startHost();
    m_service.take(path("/slow"), ScriptedService::keep());
    const auto pending = connectedClient().call(path("/slow"));
    TavoClient untried(m_bus.address());
    m_client.reset();
    ASSERT_TRUE(pending.isFinished());
    EXPECT_TRUE(pending.error().isError());
    CMReply<QVariant> held;
    {
        TavoClient shortLived(m_bus.address());
        held = shortLived.call(path("/slow"));
    }
    ASSERT_TRUE(held.isFinished());
    EXPECT_TRUE(held.error().isError());
}
