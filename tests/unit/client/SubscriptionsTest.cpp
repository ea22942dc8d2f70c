// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientTest.h"

#include <vector>

using testing::ElementsAre;

class ClientSubscriptionsTest : public ClientTest
{
protected:
    ClientSubscriptionsTest() { startHost(); }

    TavoClient &watchedClient()
    {
        TavoClient &client = connectedClient();
        QObject::connect(&client, &TavoClient::valueChanged,
                         [this](const CMPath &changed, const QVariant &value) {
                             m_paths.push_back(changed.toString().toStdString());
                             m_values.push_back(TavoValue(value.toHash()).int_());
                         });
        return client;
    }

    /// Waits until the host has handled everything that the client has sent.
    void flush() { EXPECT_TRUE(succeeds(connectedClient().list())); }

    bool waitForValues(std::size_t count)
    {
        return waitFor([&] { return m_values.size() >= count; });
    }

    const CMPath m_number{"/test/number"_s};
    std::vector<std::string> m_paths;
    std::vector<int> m_values;
};

TEST_F(ClientSubscriptionsTest, ReportsEachChangeOfAValueInOrder)
{
    m_service.publish(m_number, TavoValue().setInt_(0));
    watchedClient().subscribe(m_number, TavoClient::Change::Value);
    flush();
    for (int i = 1; i <= 3; ++i) {
        m_service.publishAgain(m_number, TavoValue().setInt_(i));
    }
    ASSERT_TRUE(waitForValues(3));
    EXPECT_THAT(m_values, ElementsAre(1, 2, 3));
    EXPECT_EQ(m_paths.front(), "/test/number");
}

TEST_F(ClientSubscriptionsTest, ReportsAChangeOnceAfterSubscribingTwice)
{
    m_service.publish(m_number, TavoValue().setInt_(0));
    TavoClient &client = watchedClient();
    client.subscribe(m_number, TavoClient::Change::Value);
    client.subscribe(m_number, TavoClient::Change::Value);
    flush();
    m_service.publishAgain(m_number, TavoValue().setInt_(1));
    m_service.publishAgain(m_number, TavoValue().setInt_(2));
    ASSERT_TRUE(waitForValues(2));
    EXPECT_THAT(m_values, ElementsAre(1, 2));
}

TEST_F(ClientSubscriptionsTest, ReportsNothingAfterUnsubscribing)
{
    const CMPath other("/test/other"_s);
    m_service.publish(m_number, TavoValue().setInt_(0));
    m_service.publish(other, TavoValue().setInt_(0));
    TavoClient &client = connectedClient();
    client.subscribe(m_number, TavoClient::Change::Value);
    client.subscribe(other, TavoClient::Change::Value);
    client.unsubscribe(m_number, TavoClient::Change::Value);
    flush();
    watchedClient();
    m_service.publishAgain(m_number, TavoValue().setInt_(1));
    m_service.publishAgain(other, TavoValue().setInt_(2));
    ASSERT_TRUE(waitForValues(1));
    EXPECT_THAT(m_values, ElementsAre(2));
}

TEST_F(ClientSubscriptionsTest, ReportsInsertedAndRemovedRows)
{
    struct Change
    {
        QStringList changes;
        int first;
        int count;
    };
    std::vector<Change> reported;
    auto *list = CMListRowsNode::create(m_service.nodes(), path("/test/list"));
    TavoClient &client = connectedClient();
    QObject::connect(&client, &TavoClient::rowsChanged,
                     [&](const CMPath &, const QStringList &changes, int first, int count) {
                         reported.push_back({changes, first, count});
                     });
    client.subscribe(path("/test/list"), TavoClient::Change::Rows);
    flush();
    list->rowsAppend(path("/a"));
    list->rowsRemoveAt(0);
    ASSERT_TRUE(waitFor([&] { return reported.size() == 2; }));
    EXPECT_EQ(reported[0].changes, QStringList(CMSubscribe::RowsChangeInserted()));
    EXPECT_EQ(reported[0].first, 0);
    EXPECT_EQ(reported[0].count, 1);
    EXPECT_EQ(reported[1].changes, QStringList(CMSubscribe::RowsChangeRemoved()));
}

TEST_F(ClientSubscriptionsTest, ReportsThatANodeIsPublishedAndRemoved)
{
    std::vector<bool> reported;
    TavoClient &client = connectedClient();
    QObject::connect(&client, &TavoClient::nodeChanged,
                     [&](const CMPath &, bool published) { reported.push_back(published); });
    client.subscribe(m_number, TavoClient::Change::Node);
    flush();
    m_service.publish(m_number, TavoValue().setInt_(0));
    m_service.withdraw(m_number);
    ASSERT_TRUE(waitFor([&] { return reported.size() == 2; }));
    EXPECT_THAT(reported, ElementsAre(true, false));
}

TEST_F(ClientSubscriptionsTest, ReportsChangesAgainAfterTheHostIsRestarted)
{
    m_service.publish(m_number, TavoValue().setInt_(0));
    TavoClient &client = watchedClient();
    client.subscribe(m_number, TavoClient::Change::Value);
    flush();
    stopHost();
    ASSERT_TRUE(waitFor([&] { return !client.isAvailable(); }));
    startHost();
    ASSERT_TRUE(waitFor([&] { return client.isAvailable(); }));
    flush();
    m_service.publishAgain(m_number, TavoValue().setInt_(5));
    ASSERT_TRUE(waitForValues(1));
    EXPECT_THAT(m_values, ElementsAre(5));
}

TEST_F(ClientSubscriptionsTest, ReportsChangesAgainAfterTheBusIsRestarted)
{
    m_service.publish(m_number, TavoValue().setInt_(0));
    TavoClient &client = watchedClient();
    client.subscribe(m_number, TavoClient::Change::Value);
    flush();
    m_bus.restart();
    ASSERT_TRUE(waitFor([&] { return !client.isAvailable(); }));
    ASSERT_TRUE(waitFor([&] { return client.isAvailable(); }));
    flush();
    m_service.publishAgain(m_number, TavoValue().setInt_(5));
    ASSERT_TRUE(waitForValues(1));
    EXPECT_THAT(m_values, ElementsAre(5));
}

TEST_F(ClientSubscriptionsTest, ReportsThatTheHostRefusesASubscription)
{
    stopHost();
    startHost({{"limits", QVariantHash{{"subscriptions", 1}}}});
    CMError refusal;
    CMPath refused;
    TavoClient &client = connectedClient();
    QObject::connect(&client, &TavoClient::subscriptionFailed,
                     [&](const CMPath &where, const CMError &error) {
                         refused = where;
                         refusal = error;
                     });
    client.subscribe(m_number, TavoClient::Change::Value);
    client.subscribe(path("/test/other"), TavoClient::Change::Value);
    ASSERT_TRUE(waitFor([&] { return refusal.isError(); }));
    EXPECT_EQ(refused, path("/test/other"));
    EXPECT_EQ(refusal.name(), TavoClientError::limitExceeded());
}
