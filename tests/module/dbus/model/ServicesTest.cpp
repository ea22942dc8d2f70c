// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/dbus/ModelTest.h"
#include "support/Request.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// The power manager and the player, as clients on the bus use them beside the module "alarm".
class DbusServicesTest : public ModelTest
{
protected:
    using Register = TavoPowerManagerModuleRegister;
    using Resource = TavoPowerManagerResourceRequest;
    using Ducking = TavoPlayerAudioDuckingRequest;

    DbusServicesTest()
    {
        publishEcho(revokePath);
        EXPECT_TRUE(
            Request(TavoPowerManagerModuleRegisterPath(),
                    Register().setModuleName("alarm").setRevokeResourcesPath(CMPath(revokePath)))
                .succeeds());
        EXPECT_TRUE(
            Request(TavoPowerManagerResourceRequestPath(), resource("alarm", acquire)).succeeds());
        EXPECT_TRUE(Request(TavoPlayerMainAudioDuckingPath(), ducking("alarm", true)).succeeds());
    }

    static constexpr auto acquire = TavoPowerModuleActions::Acquire;
    static constexpr auto release = TavoPowerModuleActions::Release;
    static Resource resource(const QString &module, TavoPowerModuleActions::Enum action)
    {
        return Resource()
            .setModuleName(module)
            .setResource(TavoPowerManagerResources::Audio)
            .setAction(action);
    }
    static Ducking ducking(const QString &requester, bool isDucked)
    {
        return Ducking().setRequester(requester).setDuckAudio(isDucked);
    }

    static BusCall send(ModelClient &by, const CMPath &path, const TavoHash &record)
    {
        return by.send(path.toString(), record.__variant());
    }
    static QString openInbox(ModelClient &by) { return by.ask("OpenInbox").text(); }
    static BusCall registerAt(ModelClient &by, const QString &name, const QString &revoke,
                              const QString &post = {})
    {
        return send(by, TavoPowerManagerModuleRegisterPath(),
                    Register()
                        .setModuleName(name)
                        .setRevokeResourcesPath(CMPath(revoke))
                        .setPostRevokeResourcesPath(CMPath(post)));
    }
    static BusCall duck(ModelClient &by, const QString &requester, bool isDucked = true)
    {
        return send(by, TavoPlayerMainAudioDuckingPath(), ducking(requester, isDucked));
    }

    static std::vector<QString> modules()
    {
        return elementsOf(valueAt(TavoPowerManagerStatePath()).powerManagerState().modules());
    }
    static std::vector<QString> holders()
    {
        const auto resources = valueAt(TavoPowerManagerStatePath()).powerManagerState().resources();
        return resources.isEmpty() ? std::vector<QString>() : elementsOf(resources.at(0).holders());
    }
    static std::vector<QString> requesters()
    {
        return elementsOf(valueAt(TavoPlayerMainAudioStatePath()).mainAudioState().requesters());
    }
    static QString nameOf(const ModelClient &of, const QString &name)
    {
        return name + " (" + QString::fromStdString(of.name()) + ')';
    }

    const QString revokePath = "/test/alarm/revoke"_s;

private:
    LoadedModule m_powerManager{POWERMANAGER_FILE, "powermanager"};
    LoadedModule m_player{PLAYER_FILE, "player"};
};

TEST_F(DbusServicesTest, RegisterAClientUnderANameOfItsOwnUntilItLeaves)
{
    ModelClient other(bus().address());
    ASSERT_TRUE(registerAt(other, "alarm", openInbox(other)).succeeds());
    ASSERT_TRUE(
        send(other, TavoPowerManagerResourceRequestPath(), resource("alarm", acquire)).succeeds());
    EXPECT_THAT(modules(), ElementsAre("alarm", nameOf(other, "alarm")));
    EXPECT_THAT(holders(), ElementsAre("alarm", nameOf(other, "alarm")));
    other.leave();
    EXPECT_TRUE(waitFor([] { return holders().size() == 1; }));
    EXPECT_THAT(modules(), ElementsAre("alarm"));
}

TEST_F(DbusServicesTest, SendMessagesToInboxesOfTheirClientOnly)
{
    ModelClient other(bus().address());
    const QString inbox = openInbox(*client);
    const QString notIts = openInbox(other);
    for (const QString &path :
         {notIts, revokePath, "/dbus/sounds/1"_s, "/powerManager/resume"_s,
          "/player/mainAudio/stop"_s, "/test/nothing"_s, inbox + "/below"_s}) {
        EXPECT_EQ(registerAt(*client, "evil", path).errorName(), accessDenied) << path;
        EXPECT_EQ(registerAt(*client, "evil", inbox, path).errorName(), accessDenied) << path;
    }
    EXPECT_THAT(modules(), ElementsAre("alarm"));
    EXPECT_TRUE(registerAt(*client, "good", inbox, inbox).succeeds());
}

TEST_F(DbusServicesTest, LetNoClientReleaseOrUnduckForOthers)
{
    ASSERT_TRUE(send(*client, TavoPowerManagerResourceRequestPath(), resource("alarm", release))
                    .succeeds());
    ASSERT_TRUE(duck(*client, "alarm", false).succeeds());
    EXPECT_FALSE(send(*client, TavoPowerManagerResourceRequestPath(), resource("alarm", acquire))
                     .succeeds());
    EXPECT_THAT(holders(), ElementsAre("alarm"));
    EXPECT_THAT(requesters(), ElementsAre("alarm"));
}

TEST_F(DbusServicesTest, EndTheDuckingOfAClientThatLeaves)
{
    ModelClient other(bus().address());
    for (const char *name : {"alarm", "call", "done"}) {
        ASSERT_TRUE(duck(other, name).succeeds());
    }
    ASSERT_TRUE(duck(other, "done", false).succeeds());
    EXPECT_THAT(requesters(), ElementsAre("alarm", nameOf(other, "alarm"), nameOf(other, "call")));
    other.leave();
    EXPECT_TRUE(waitFor([] { return requesters().size() == 1; }));
    EXPECT_THAT(requesters(), ElementsAre("alarm"));
}

TEST_F(DbusServicesTest, DuckForALimitedNumberOfRequestersOfAClient)
{
    for (int i = 0; i < 16; ++i) {
        ASSERT_TRUE(duck(*client, QString::number(i)).succeeds());
    }
    EXPECT_EQ(duck(*client, "more").errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_THAT(requesters(), SizeIs(17));
    ModelClient other(bus().address());
    EXPECT_TRUE(duck(other, "other").succeeds());
}

TEST_F(DbusServicesTest, DuckForALimitedNumberOfRequestersOfAUser)
{
    constexpr int maxOfClient = 16;
    constexpr int maxOfUser = 56;
    std::vector<std::unique_ptr<ModelClient>> clients;
    for (int i = 0; i < maxOfUser; ++i) {
        if (i % maxOfClient == 0) {
            clients.push_back(std::make_unique<ModelClient>(bus().address()));
        }
        ASSERT_TRUE(duck(*clients.back(), QString::number(i)).succeeds());
    }
    ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds()); // so that its user is known
    EXPECT_EQ(duck(*client, "more").errorName(), "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_THAT(requesters(), SizeIs(1 + maxOfUser));
    clients.pop_back();
    EXPECT_TRUE(waitFor([&] { return duck(*client, "more").succeeds(); }));
}

TEST_F(DbusServicesTest, RegisterALimitedNumberOfModulesOfAClient)
{
    const QString inbox = openInbox(*client);
    for (int i = 0; i < 16; ++i) {
        registerAt(*client, QString::number(i), inbox).waitForAnswer();
    }
    EXPECT_EQ(registerAt(*client, "more", inbox).errorName(),
              "org.freedesktop.DBus.Error.LimitsExceeded");
}

TEST_F(DbusServicesTest, RefuseNamesThatWouldNotAllFitIntoTheirStates)
{
    const QString inbox = openInbox(*client);
    const QString name(64, QChar(0x4e2d));
    EXPECT_TRUE(registerAt(*client, name, inbox).succeeds());
    EXPECT_TRUE(duck(*client, name).succeeds());
    const char *refusal = "A name of a module or requester may have no more than 64 characters";
    EXPECT_EQ(registerAt(*client, name + 'x', inbox).errorMessage(), refusal);
    EXPECT_EQ(duck(*client, name + 'x').errorMessage(), refusal);
    EXPECT_THAT(modules(), SizeIs(2)); // one is of the test
    EXPECT_THAT(requesters(), SizeIs(2));
}

TEST_F(DbusServicesTest, RefuseClientsWithoutANameAndValuesThatAreNotRecords)
{
    EXPECT_EQ(duck(*client, "").errorName(), "org.tavo.Error.Player");
    EXPECT_EQ(registerAt(*client, "", openInbox(*client)).errorName(),
              "org.tavo.Error.PowerManager");
    EXPECT_EQ(client->send(TavoPowerManagerModuleRegisterPath().toString(), "alarm"_s).errorName(),
              "org.tavo.Error.PowerManager");
}
} // namespace
