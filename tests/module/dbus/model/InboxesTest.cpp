// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"
#include "support/Request.h"

#include <optional>

namespace {
using testing::ElementsAre;
using testing::StartsWith;

bool isPublished(const QString &path)
{
    return !CMCatalog::tree(CMPath(path)).empty();
}

class DbusInboxesTest : public ModelTest
{
protected:
    QString open() { return client->ask("OpenInbox").text(); }
};

TEST_F(DbusInboxesTest, AreNodesWhoseRequestsReachTheirClient)
{
    const QString inbox = open();
    EXPECT_THAT(inbox.toStdString(), StartsWith("/dbus/inbox/"));
    const Request request(CMPath(inbox), QVariant(QVariantHash{{"int", 5}}));
    EXPECT_TRUE(request.succeeds());
    EXPECT_FALSE(request.value().isValid());
    EXPECT_TRUE(client->waitForSignals(1));
    EXPECT_THAT(client->received, ElementsAre("Received " + inbox.toStdString() + " {int: 5}"));
}

TEST_F(DbusInboxesTest, HaveDifferentPaths)
{
    const QString first = open();
    const QString second = open();
    EXPECT_NE(first, second);
    ASSERT_TRUE(client->ask("CloseInbox", {second}).succeeds());
    EXPECT_NE(open(), second);
}

TEST_F(DbusInboxesTest, DisappearWhenClosed)
{
    const QString inbox = open();
    ASSERT_TRUE(client->ask("CloseInbox", {inbox}).succeeds());
    EXPECT_FALSE(isPublished(inbox));
    EXPECT_EQ(client->ask("CloseInbox", {inbox}).errorName(),
              "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(DbusInboxesTest, StayUntilTheRegistrationOfAModuleWithThemIsAnswered)
{
    std::optional<CMReply<QVariant>> held;
    publishRequest(TavoPowerManagerModuleRegisterPath().toString(),
                   [&held](const CMSetDataRequest &request) { held = request.reply(); });
    const QString inbox = open();
    const auto module =
        TavoPowerManagerModuleRegister().setModuleName("alarm"_s).setRevokeResourcesPath(
            CMPath(inbox));
    const BusCall call =
        client->send(TavoPowerManagerModuleRegisterPath().toString(), module.__variant());
    ASSERT_TRUE(waitFor([&held] { return held.has_value(); }));
    ASSERT_TRUE(client->ask("CloseInbox", {inbox}).succeeds());
    EXPECT_TRUE(isPublished(inbox)) << "the power manager forgets the module when the node goes";
    held->setValue({});
    EXPECT_TRUE(call.succeeds());
    EXPECT_TRUE(waitFor([&inbox] { return !isPublished(inbox); }));
}

TEST_F(DbusInboxesTest, CanNotBeClosedByOthers)
{
    const QString inbox = open();
    ModelClient other(bus().address());
    EXPECT_EQ(other.ask("CloseInbox", {inbox}).errorName(),
              "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_TRUE(isPublished(inbox));
}

TEST_F(DbusInboxesTest, StayWhenAnotherClientForgesTheirOwnersDeparture)
{
    const QString inbox = open();
    ModelClient other(bus().address());
    const BusInterface interface {
        "/org/freedesktop/DBus", "org.freedesktop.DBus"
    };
    other.sendSignal(interface, "NameOwnerChanged", "org.tavo.Model1", [this](BusWriter &forged) {
        const QString name = QString::fromStdString(client->name());
        forged.writeString(name);
        forged.writeString(name);
        forged.writeString({});
    });
    // This reply comes after the signal.
    other.getValue("/none"_s).waitForAnswer();
    EXPECT_TRUE(isPublished(inbox));
}

TEST_F(DbusInboxesTest, DisappearOnlyWithTheirOwnClient)
{
    ModelClient other(bus().address());
    const QString kept = other.ask("OpenInbox").text();
    const QString first = open();
    const QString second = open();
    client->leave();
    EXPECT_TRUE(waitFor([&] { return !isPublished(first) && !isPublished(second); }));
    EXPECT_TRUE(isPublished(kept));
}

/// The bus drops a signal if too much waits for the host; here it drops all of this name.
class DbusUnnoticedEndTest : public ModelTest
{
protected:
    DbusUnnoticedEndTest()
        : ModelTest({},
                    "<policy context=\"mandatory\"><deny receive_interface=\"org.freedesktop.DBus\""
                    " receive_member=\"NameOwnerChanged\"/></policy>"_s)
    {
    }
};

TEST_F(DbusUnnoticedEndTest, IsFoundOutSoon)
{
    auto visitor = std::make_unique<ModelClient>(bus().address());
    const QString left = visitor->ask("OpenInbox").text();
    const QString kept = client->ask("OpenInbox").text();
    ASSERT_TRUE(isPublished(left));
    visitor.reset();
    EXPECT_TRUE(waitFor([&] { return !isPublished(left); }));
    EXPECT_TRUE(isPublished(kept));
}
} // namespace
