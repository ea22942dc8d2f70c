// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientTest.h"
#include <client/TavoInbox.h>

#include <vector>

class InboxTest : public ClientTest
{
protected:
    InboxTest() { startHost(); }

    bool isOpen(const TavoInbox &inbox)
    {
        return waitFor([&] { return !inbox.path().isEmpty(); });
    }

    static bool isAnswered(const CMReply<QVariant> &reply)
    {
        return waitFor([&] { return reply.isFinished(); }) && !reply.error().isError();
    }

    static CMReply<QVariant> send(const CMPath &path, const QVariant &value)
    {
        return CMRoot()->invoke(path, value, CMReply<QVariant>());
    }
};

TEST_F(InboxTest, ReceivesTheRequestsToItsPath)
{
    TavoInbox inbox(&connectedClient());
    QVariantList received;
    QObject::connect(&inbox, &TavoInbox::received,
                     [&](const QVariant &value) { received.append(value); });
    ASSERT_TRUE(isOpen(inbox));
    EXPECT_TRUE(isAnswered(send(inbox.path(), QVariantHash{{"a", 1}})));
    EXPECT_TRUE(isAnswered(send(inbox.path(), "two")));
    ASSERT_TRUE(waitFor([&] { return received.size() == 2; }));
    EXPECT_EQ(received, QVariantList({QVariantHash{{"a", 1}}, "two"}));
}

TEST_F(InboxTest, ReportsTheResponsesOfASound)
{
    TavoInbox inbox(&connectedClient());
    std::vector<TavoNotificationPlayerResponse> responses;
    QObject::connect(&inbox, &TavoInbox::responded,
                     [&](const auto &response) { responses.push_back(response); });
    ASSERT_TRUE(isOpen(inbox));
    const auto response = TavoNotificationPlayerResponse().setId("bell").setType(
        TavoNotificationPlayerResponseType::Finished);
    send(inbox.path(), "something else");
    send(inbox.path(), TavoValue().setNotificationPlayerResponse(response).__variant());
    ASSERT_TRUE(waitFor([&] { return !responses.empty(); }));
    ASSERT_EQ(responses.size(), 1U);
    EXPECT_EQ(responses[0], response);
}

TEST_F(InboxTest, ReceivesOnlyItsOwnRequests)
{
    TavoInbox first(&connectedClient());
    TavoInbox second(&connectedClient());
    QVariantList firsts;
    QVariantList seconds;
    QObject::connect(&first, &TavoInbox::received, [&](const QVariant &v) { firsts.append(v); });
    QObject::connect(&second, &TavoInbox::received, [&](const QVariant &v) { seconds.append(v); });
    ASSERT_TRUE(isOpen(first));
    ASSERT_TRUE(isOpen(second));
    EXPECT_NE(first.path(), second.path());
    send(first.path(), 1);
    send(second.path(), 2);
    ASSERT_TRUE(waitFor([&] { return !firsts.isEmpty() && !seconds.isEmpty(); }));
    EXPECT_EQ(firsts, QVariantList{1});
    EXPECT_EQ(seconds, QVariantList{2});
}

TEST_F(InboxTest, RemovesItsNodeWhenDestroyed)
{
    auto inbox = std::make_unique<TavoInbox>(&connectedClient());
    ASSERT_TRUE(isOpen(*inbox));
    const CMPath path = inbox->path();
    inbox.reset();
    ASSERT_TRUE(succeeds(connectedClient().list()));
    const auto reply = send(path, 1);
    ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }));
    EXPECT_EQ(reply.error().name(), CMErrors::noSuchNode());
}

TEST_F(InboxTest, MayBeAChildOfItsClient)
{
    auto *inbox = new TavoInbox(&connectedClient(), &connectedClient());
    ASSERT_TRUE(isOpen(*inbox));
    const CMPath path = inbox->path();
    m_client.reset();
    EXPECT_TRUE(waitFor([&] {
        const auto reply = send(path, 1);
        return waitFor([&] { return reply.isFinished(); }) &&
               reply.error().name() == CMErrors::noSuchNode();
    })) << "the host takes what is a client's away with it";
}

TEST_F(InboxTest, IsOpenedAgainAfterTheHostIsRestarted)
{
    TavoInbox inbox(&connectedClient());
    ASSERT_TRUE(isOpen(inbox));
    int lost = 0;
    QObject::connect(&inbox, &TavoInbox::lost, [&] { ++lost; });
    stopHost();
    ASSERT_TRUE(waitFor([&] { return lost == 1; }));
    EXPECT_TRUE(inbox.path().isEmpty());
    startHost();
    ASSERT_TRUE(isOpen(inbox));
    QVariantList received;
    QObject::connect(&inbox, &TavoInbox::received,
                     [&](const QVariant &value) { received.append(value); });
    send(inbox.path(), 3);
    EXPECT_TRUE(waitFor([&] { return received == QVariantList{3}; }));
}

TEST_F(InboxTest, ReportsThatTheHostRefusesIt)
{
    stopHost();
    startHost({{"limits", QVariantHash{{"inboxes", 1}}}});
    TavoInbox first(&connectedClient());
    TavoInbox second(&connectedClient());
    CMError refusal;
    QObject::connect(&second, &TavoInbox::failed, [&](const CMError &error) { refusal = error; });
    ASSERT_TRUE(waitFor([&] { return refusal.isError(); }));
    EXPECT_EQ(refusal.name(), TavoClientError::limitExceeded());
    EXPECT_FALSE(first.path().isEmpty());
}
