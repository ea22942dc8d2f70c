// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Clients that send many calls, or calls that take long, beside one that sends few.

#include "module/dbus/ModelTest.h"
#include "support/bus/BusUser.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <sys/stat.h>

namespace {

class DbusTurnsTest : public ModelTest
{
protected:
    explicit DbusTurnsTest(const QVariantHash &limits = {})
        : ModelTest({{"limits", limits}})
    {
        publishValue("/test/value"_s, 5);
        for (int i = 0; i < 2000; ++i) {
            publishValue("/many/%1"_s.arg(i), i);
        }
    }

    static std::vector<BusCall> sendSlowCalls(ModelClient &by, int count)
    {
        std::vector<BusCall> calls;
        for (int i = 0; i < count; ++i) {
            calls.push_back(by.ask("Tree", {"/many"_s}));
        }
        return calls;
    }

    /// The longest that the client waits for one of some replies.
    qint64 longestWaitMs()
    {
        qint64 longest = 0;
        for (int i = 0; i < 10; ++i) {
            QElapsedTimer wait;
            wait.start();
            EXPECT_TRUE(client->getValue("/test/value"_s).succeeds());
            longest = std::max(longest, wait.elapsed());
        }
        return longest;
    }
};

TEST_F(DbusTurnsTest, AreNotTakenByOneClientThatSendsAThousandSlowCalls)
{
    ModelClient greedy(bus().address());
    const std::vector<BusCall> calls = sendSlowCalls(greedy, 1000);
    ASSERT_TRUE(calls.front().waitForAnswer());
    EXPECT_LT(longestWaitMs(), 1000);
    EXPECT_FALSE(calls.back().isAnswered());
}

TEST_F(DbusTurnsTest, AreNotTakenByManyClients)
{
    std::vector<std::unique_ptr<ModelClient>> crowd;
    std::vector<BusCall> calls;
    for (int i = 0; i < 20; ++i) {
        crowd.push_back(std::make_unique<ModelClient>(bus().address()));
        for (const BusCall &call : sendSlowCalls(*crowd.back(), 100)) {
            calls.push_back(call);
        }
    }
    ASSERT_TRUE(calls.front().waitForAnswer());
    EXPECT_LT(longestWaitMs(), 1000);
    EXPECT_FALSE(calls.back().isAnswered());
}

TEST_F(DbusTurnsTest, AreNotSpentOnATreeThatIsTooLarge)
{
    constexpr int groups = 200;
    constexpr int nodesOfGroup = 200;
    for (int group = 0; group < groups; ++group) {
        for (int node = 0; node < nodesOfGroup; ++node) {
            publishValue("/test/%1/%2"_s.arg(group).arg(node), node);
        }
    }
    EXPECT_EQ(client->ask("Tree", {"/test"_s}).errorMessage(),
              "The value is too large for a message");
    EXPECT_TRUE(client->ask("Tree", {"/test/1"_s}).succeeds());
}

TEST_F(DbusTurnsTest, AreNotTakenByQueriesWhoseReplyIsNotWanted)
{
    ModelClient greedy(bus().address());
    QElapsedTimer wanted;
    wanted.start();
    for (int i = 0; i < 150; ++i) {
        EXPECT_TRUE(greedy.ask("Tree", {"/many"_s}).succeeds());
    }
    const qint64 wantedMs = wanted.elapsed();

    QElapsedTimer unwanted;
    unwanted.start();
    for (int i = 0; i < 1500; ++i) {
        const BusMessage call = greedy.connection().createCall(
            "org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1", "Tree");
        BusWriter(call).writeString("/many"_s);
        ASSERT_GE(sd_bus_message_set_expect_reply(call.get(), 0), 0);
        call.send();
    }
    // The calls of one client are handled in their order.
    EXPECT_TRUE(greedy.getValue("/test/value"_s).succeeds());
    EXPECT_LT(unwanted.elapsed(), wantedMs);
}

TEST_F(DbusTurnsTest, OfClientsThatLeaveAreGivenUp)
{
    ModelClient greedy(bus().address());
    const std::vector<BusCall> calls = sendSlowCalls(greedy, 2000);
    ASSERT_TRUE(calls.front().waitForAnswer());
    greedy.leave();
    QElapsedTimer wait;
    wait.start();
    // This takes longer than the other calls of this client.
    for (const BusCall &call : sendSlowCalls(*client, 10)) {
        EXPECT_TRUE(call.succeeds());
    }
    EXPECT_LT(wait.elapsed(), 5000);
}

TEST_F(DbusTurnsTest, OfRequestsComeEvenAfterTheirClientHasLeft)
{
    int requests = 0;
    publishRequest("/test/count"_s, [&requests](const CMSetDataRequest &request) {
        ++requests;
        request.reply().setValue({});
    });
    ModelClient leaving(bus().address());
    const std::vector<BusCall> calls = sendSlowCalls(leaving, 50);
    for (int i = 0; i < 10; ++i) {
        leaving.send("/test/count"_s, i);
    }
    // So that the requests have reached the host.
    ASSERT_TRUE(calls[10].waitForAnswer());
    leaving.leave();
    EXPECT_TRUE(waitFor([&] { return requests == 10; }));
}

class DbusWaitingBytesTest : public DbusTurnsTest
{
protected:
    DbusWaitingBytesTest()
        : DbusTurnsTest({{"totalRequestBytes", 8 << 20}})
    {
        publishEcho("/test/echo"_s);
    }
};

TEST_F(DbusWaitingBytesTest, AreLimited)
{
    ModelClient greedy(bus().address());
    const std::vector<BusCall> slow = sendSlowCalls(greedy, 1000);
    std::vector<BusCall> calls;
    for (int i = 0; i < 20; ++i) {
        calls.push_back(greedy.send("/test/echo"_s, QByteArray(1'000'000, 'x')));
    }
    EXPECT_TRUE(client->send("/test/echo"_s, 5).succeeds());
    int refused = 0;
    for (const BusCall &call : calls) {
        refused += call.errorName() == limitsExceeded ? 1 : 0;
    }
    EXPECT_GE(refused, 14);
    EXPECT_LT(refused, 20);
}

/// A module that keeps its requests waiting.
class DbusModuleTurnsTest : public ModelTest
{
protected:
    DbusModuleTurnsTest()
        : ModelTest({}, "<policy context=\"default\"><allow user=\"*\"/></policy>"_s)
    {
        publishRequest("/test/slow"_s,
                       [this](const CMSetDataRequest &request) { requests.push_back(request); });
    }

    std::unique_ptr<ModelClient> clientOfAnotherUser()
    {
        ::chmod(QFile::encodeName(bus().folder()).constData(), 0755);
        const ActAs otherUser(BusUser::find("daemon"));
        auto other = std::make_unique<ModelClient>(bus().address());
        EXPECT_TRUE(other->ask("List", {"/"_s}).succeeds()); // so that its user is known
        return other;
    }

    /// Whether a client that sends much there is refused before long.
    static bool isRefusedLater(ModelClient &client, const QString &path)
    {
        std::vector<BusCall> calls;
        for (int i = 0; i < 40; ++i) {
            calls.push_back(client.send(path, QByteArray(200'000, 'x')));
        }
        return std::any_of(calls.begin(), calls.end(),
                           [](const BusCall &call) { return call.errorName() == limitsExceeded; });
    }

    std::vector<CMSetDataRequest> requests;
};

TEST_F(DbusModuleTurnsTest, OfAModuleAreNotTakenByOneUser)
{
    if (!BusUser::canBeAnyone()) {
        GTEST_SKIP() << "it takes root to be somebody else";
    }
    const auto greedy = clientOfAnotherUser();
    std::vector<BusCall> calls;
    constexpr std::size_t many = 1000;
    for (std::size_t i = 0; i < many; ++i) {
        calls.push_back(greedy->send("/test/slow"_s, "greedy"_s));
    }
    ASSERT_TRUE(waitFor([this] { return !requests.empty(); }));
    constexpr int meanwhile = 300;
    for (int i = 0; i < meanwhile; ++i) {
        ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds());
    }
    client->send("/test/slow"_s, "other"_s);
    std::size_t before = 0;
    ASSERT_TRUE(waitFor([&] {
        const auto isOther = [](const CMSetDataRequest &request) {
            return request.value() == "other"_s;
        };
        const auto other = std::find_if(requests.begin(), requests.end(), isOther);
        before = std::size_t(other - requests.begin());
        return other != requests.end();
    }));
    EXPECT_LT(before, many);
}

TEST_F(DbusModuleTurnsTest, OfThePlayerAreNotTakenByOneUser)
{
    if (!BusUser::canBeAnyone()) {
        GTEST_SKIP() << "it takes root to be somebody else";
    }
    const QString enqueue = TavoNotificationPlayerEnqueuePath().toString();
    publishRequest(enqueue,
                   [this](const CMSetDataRequest &request) { requests.push_back(request); });
    const auto sound = [](const QString &id) {
        const auto item = TavoNotificationPlayerItem(TavoHash())
                              .setId(id)
                              .setType(TavoNotificationPlayerItemType::Fake);
        return TavoValue().setNotificationPlayerItem(item).__variant();
    };
    const auto greedy = clientOfAnotherUser();
    std::vector<BusCall> calls;
    for (int i = 0; i < 100; ++i) {
        calls.push_back(greedy->send(enqueue, sound(QString::number(i))));
    }
    ASSERT_TRUE(waitFor([this] { return !requests.empty(); }));
    client->send(enqueue, sound("other"_s));
    const auto isOther = [](const CMSetDataRequest &request) {
        return TavoValue(request.value().toHash()).notificationPlayerItem().id() == "other"_s;
    };
    auto other = requests.end();
    ASSERT_TRUE(waitFor([&] {
        other = std::find_if(requests.begin(), requests.end(), isOther);
        return other != requests.end();
    }));
    EXPECT_LT(other - requests.begin(), 16);
}

TEST_F(DbusModuleTurnsTest, OfTheModuleForAttentionAreNotTakenByOneUserHoweverLongItTakes)
{
    if (!BusUser::canBeAnyone()) {
        GTEST_SKIP() << "it takes root to be somebody else";
    }
    const QString path = TavoAttentionTryPath().toString();
    publishRequest(path, [this](const CMSetDataRequest &request) { requests.push_back(request); });
    ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds()); // so that its user is known
    const auto greedy = clientOfAnotherUser();
    std::vector<BusCall> calls;
    for (int i = 0; i < 100; ++i) {
        calls.push_back(greedy->send(path, "greedy"_s));
    }
    ASSERT_TRUE(waitFor([this] { return !requests.empty(); }));
    QElapsedTimer passed; // requests to other modules are not in their way any more by then
    passed.start();
    ASSERT_TRUE(waitFor([&] { return passed.hasExpired(500); }));
    client->send(path, "other"_s);
    ASSERT_TRUE(waitFor([this] { return requests.back().value() == "other"_s; }));
    EXPECT_LE(requests.size(), 16U);
    EXPECT_FALSE(calls.back().isAnswered());
}

TEST_F(DbusModuleTurnsTest, OfAnInboxAreNotTakenByAnotherUser)
{
    if (!BusUser::canBeAnyone()) {
        GTEST_SKIP() << "it takes root to be somebody else";
    }
    ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds()); // so that its user is known
    const QString inbox = client->ask("OpenInbox").text();
    const auto greedy = clientOfAnotherUser();
    EXPECT_TRUE(greedy->send(inbox, "one"_s).succeeds());
    EXPECT_TRUE(isRefusedLater(*greedy, inbox));
    EXPECT_TRUE(client->send(inbox, "own"_s).succeeds());
}

TEST_F(DbusModuleTurnsTest, OfAnInboxAreNotTakenByTheResponsesOfAnothersSounds)
{
    if (!BusUser::canBeAnyone()) {
        GTEST_SKIP() << "it takes root to be somebody else";
    }
    const QString enqueue = TavoNotificationPlayerEnqueuePath().toString();
    publishRequest(enqueue, [](const CMSetDataRequest &request) { request.reply().setValue({}); });
    ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds()); // so that its user is known
    const QString inbox = client->ask("OpenInbox").text();
    const auto greedy = clientOfAnotherUser();
    const auto play = [&](ModelClient &by, const QString &receiver) {
        const auto item = TavoNotificationPlayerItem(TavoHash())
                              .setType(TavoNotificationPlayerItemType::Fake)
                              .setPlaybackResponsePath(CMPath(receiver));
        return by.send(enqueue, TavoValue().setNotificationPlayerItem(item).__variant());
    };
    EXPECT_EQ(play(*greedy, inbox).errorMessage(),
              "The caller has no inbox at " + inbox.toStdString());
    EXPECT_FALSE(play(*greedy, "/dbus/inbox/99"_s).succeeds()) << "which may be opened later";
    EXPECT_TRUE(play(*greedy, greedy->ask("OpenInbox").text()).succeeds());
    EXPECT_TRUE(play(*client, inbox).succeeds());
}

TEST_F(DbusModuleTurnsTest, OfThoseWhoseMessagesHaveActionsAreNotTakenByAnotherUser)
{
    if (!BusUser::canBeAnyone()) {
        GTEST_SKIP() << "it takes root to be somebody else";
    }
    ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds()); // so that its user is known
    const auto greedy = clientOfAnotherUser();
    for (const char *message : {"/dbus/notifications/1", "/attention/messages/1"}) {
        const QString action = QString::fromLatin1(message) + "/actions/0"_s;
        publishRequest(action,
                       [](const CMSetDataRequest &request) { request.reply().setValue({}); });
        EXPECT_TRUE(isRefusedLater(*greedy, action)) << message;
    }
}

TEST_F(DbusModuleTurnsTest, OfRequestsForMusicComeOneAfterTheOther)
{
    const QString play = TavoPlayerMainAudioPlayPath().toString();
    publishRequest(play, [this](const CMSetDataRequest &request) { requests.push_back(request); });
    ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds()); // so that its user is known
    constexpr std::size_t limit = 4;
    std::vector<BusCall> calls;
    for (std::size_t i = 0; i < limit; ++i) {
        calls.push_back(client->send(play, {}));
    }
    EXPECT_EQ(client->send(play, {}).errorName(), limitsExceeded);
    for (std::size_t i = 0; i < limit; ++i) {
        ASSERT_TRUE(waitFor([&] { return requests.size() > i; }));
        EXPECT_EQ(requests.size(), i + 1);
        requests.back().reply().setValue({});
        EXPECT_TRUE(calls[i].succeeds());
    }
}

TEST_F(DbusModuleTurnsTest, OfSlowRequestsGoToTheUserWhoseTookTheLeastTime)
{
    if (!BusUser::canBeAnyone()) {
        GTEST_SKIP() << "it takes root to be somebody else";
    }
    const QString play = TavoPlayerMainAudioPlayPath().toString();
    publishRequest(play, [this](const CMSetDataRequest &request) { requests.push_back(request); });
    ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds()); // so that its user is known
    const auto greedy = clientOfAnotherUser();
    std::vector<BusCall> calls;
    for (int i = 0; i < 3; ++i) {
        calls.push_back(greedy->send(play, {}));
    }
    ASSERT_TRUE(waitFor([this] { return requests.size() == 1; }));
    BusCall other = client->send(play, {});
    ASSERT_TRUE(client->ask("List", {"/"_s}).succeeds()); // handled after it
    requests[0].reply().setValue({});
    ASSERT_TRUE(waitFor([this] { return requests.size() == 2; }));
    requests[1].reply().setValue({});
    EXPECT_TRUE(other.succeeds());
}

TEST_F(DbusModuleTurnsTest, AreNotTakenByReadingManyLargeTexts)
{
    const QString large(500'000, QChar(0xe9)); // each character is checked
    const auto isRefused = [](const BusCall &call) {
        return call.errorMessage() ==
               "A user's clients may not send so many large calls in so short a time";
    };
    // On a busy machine, reading takes a smaller part of the time.
    EXPECT_TRUE(waitFor([&] {
        std::vector<BusCall> calls;
        for (int i = 0; i < 40; ++i) {
            calls.push_back(client->send("/test/nothing"_s, large));
        }
        return std::any_of(calls.begin(), calls.end(), isRefused);
    }));
    EXPECT_TRUE(waitFor([&] {
        return client->send("/test/nothing"_s, large).errorName() != limitsExceeded;
    })) << "and later they may";
}

TEST_F(DbusModuleTurnsTest, AreNotTakenByRequestsThatWaitForLong)
{
    constexpr std::size_t many = 100;
    for (std::size_t i = 0; i < many; ++i) {
        client->send("/test/slow"_s, "waits"_s);
    }
    EXPECT_TRUE(client->ask("List", {"/"_s}).succeeds());
    EXPECT_EQ(requests.size(), many);
}
} // namespace
