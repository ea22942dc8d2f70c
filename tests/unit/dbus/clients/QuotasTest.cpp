// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/clients/Quotas.h"

#include <bus/BusError.h>

#include <gtest/gtest.h>

#include <map>
#include <utility>
#include <vector>

namespace {
class QuotasTest : public testing::Test
{
protected:
    static ClientLimits limits()
    {
        ClientLimits limits{};
        limits.openNotifications = 2;
        limits.totalOpenNotifications = 3;
        limits.storedBytes = 1000;
        limits.totalStoredBytes = 2000;
        limits.totalRequestBytes = 100'000;
        limits.totalUnreadBytes = 1'000'000;
        return limits;
    }

    std::string refusal(const std::string &client, Quotas::Kind kind, std::size_t amount = 1)
    {
        try {
            quotas.charge(client, {kind, amount});
        } catch (const BusError &error) {
            return error.message();
        }
        return {};
    }

    Quotas quotas{limits()};
};

TEST_F(QuotasTest, CountWhatIsHeldUntilItIsGivenBack)
{
    Quotas::Charge first = quotas.charge(":1.1", {Quotas::OpenNotifications});
    {
        const Quotas::Charge second = quotas.charge(":1.1", {Quotas::OpenNotifications});
        EXPECT_EQ(quotas.held(":1.1", Quotas::OpenNotifications), 2);
        EXPECT_EQ(quotas.held(":1.1", Quotas::Sounds), 0);
        EXPECT_EQ(quotas.held(":1.2", Quotas::OpenNotifications), 0);
        EXPECT_EQ(refusal(":1.1", Quotas::OpenNotifications),
                  "A client may have no more than 2 notifications open");
    }
    const Quotas::Charge moved = std::move(first);
    EXPECT_EQ(moved.client(), ":1.1");
    EXPECT_EQ(quotas.held(":1.1", Quotas::OpenNotifications), 1);
}

TEST_F(QuotasTest, CountOnceWhatIsMovedOverSomethingElse)
{
    Quotas::Charge charge = quotas.charge(":1.1", {Quotas::OpenNotifications});
    charge = quotas.charge(":1.2", {Quotas::OpenNotifications});
    EXPECT_EQ(charge.client(), ":1.2");
    EXPECT_EQ(quotas.held(":1.1", Quotas::OpenNotifications), 0);
    EXPECT_EQ(quotas.held(":1.2", Quotas::OpenNotifications), 1);
}

TEST_F(QuotasTest, CountWhatOutlivesItsClientOnlyInTheTotal)
{
    std::vector<Quotas::Charge> charges;
    charges.push_back(quotas.charge(":1.1", {Quotas::OpenNotifications}));
    charges.push_back(quotas.charge(":1.1", {Quotas::OpenNotifications}));
    quotas.forget(":1.1");
    EXPECT_EQ(charges.front().client(), "");
    EXPECT_FALSE(quotas.knows(":1.1"));
    EXPECT_EQ(quotas.held(":1.1", Quotas::OpenNotifications), 0);
    const std::string totalReached =
        "All clients together may have no more than 3 notifications open";
    // The next client by this name, on another bus, holds nothing yet.
    charges.push_back(quotas.charge(":1.1", {Quotas::OpenNotifications}));
    EXPECT_EQ(refusal(":1.1", Quotas::OpenNotifications), totalReached);
    charges.erase(charges.begin());
    EXPECT_EQ(refusal(":1.1", Quotas::OpenNotifications), "");
    charges.clear();
    EXPECT_EQ(quotas.held(":1.1", Quotas::OpenNotifications), 0);
}

TEST_F(QuotasTest, LeaveAsMuchForTheOthersWhereOneClientHasNoLimitOfItsOwn)
{
    const Quotas::Charge first = quotas.charge(":1.1", {Quotas::RequestBytes, 50'000});
    const std::string totalReached = "All clients together may have no more than 100000 bytes of "
                                     "requests that wait for their replies";
    EXPECT_EQ(refusal(":1.1", Quotas::RequestBytes, 1), totalReached);
    const Quotas::Charge second = quotas.charge(":1.2", {Quotas::RequestBytes, 25'000});
    EXPECT_EQ(refusal(":1.2", Quotas::RequestBytes, 1), totalReached);
    EXPECT_EQ(refusal(":1.3", Quotas::RequestBytes, 12'000), "");
}

TEST_F(QuotasTest, LeaveRoomForUnreadBytesToEachUserHoweverManyClientsAnotherHas)
{
    const auto fill = [this](std::uint32_t user) {
        std::size_t taken = 0;
        for (const char *number : {".1", ".2", ".3", ".4"}) {
            const std::string client = ':' + std::to_string(user) + number;
            quotas.countRequest(client);
            quotas.setUser(client, user);
            for (; quotas.hasRoom(client, Quotas::UnreadBytes, 1000); taken += 1000) {
                quotas.add(client, Quotas::UnreadBytes, 1000);
            }
        }
        return taken;
    };
    // Each client may always hold 16 KiB.
    EXPECT_EQ(fill(1000), 782'000U);
    EXPECT_LT(fill(1001), 200'000U);
    quotas.countRequest(":2.1");
    quotas.setUser(":2.1", 1002);
    EXPECT_TRUE(quotas.hasRoom(":2.1", Quotas::UnreadBytes, Quotas::freeBytes));
    quotas.subtract(":1000.1", Quotas::UnreadBytes, 400'000);
    EXPECT_TRUE(quotas.hasRoom(":2.1", Quotas::UnreadBytes, 200'000));
}

TEST_F(QuotasTest, CountTheBytesOfWhatIsNeverGivenUpApart)
{
    ClientLimits limits = QuotasTest::limits();
    limits.subscriptions = 100;
    limits.totalStoredBytes = 400'000;
    Quotas large(limits);
    std::vector<Quotas::Charge> charges;
    const auto subscribe = [&](const char *client) {
        charges.push_back(large.charge(client, {Quotas::Subscriptions, 1, 30'000}));
    };
    subscribe(":1.1");
    EXPECT_EQ(large.held(":1.1", Quotas::StoredBytes), 0U);
    subscribe(":1.2");
    try {
        subscribe(":1.2");
        ADD_FAILURE() << "nothing is left for others";
    } catch (const BusError &error) {
        EXPECT_EQ(error.message(), "All clients together may have no more than 100000 bytes of "
                                   "subscriptions and inboxes");
    }
    charges.clear();
    EXPECT_EQ(large.held(":1.2", Quotas::KeptBytes), 0U);
}

TEST_F(QuotasTest, KnowAClientFromItsFirstRequestUntilItLeaves)
{
    EXPECT_FALSE(quotas.knows(":1.1"));
    quotas.countRequest(":1.1");
    EXPECT_TRUE(quotas.knows(":1.1"));
    EXPECT_EQ(quotas.clients(), std::vector<std::string>{":1.1"});
    quotas.forget(":1.1");
    EXPECT_FALSE(quotas.knows(":1.1"));
}

/// Clients that hold many sounds, which can be given up to make room for others.
class QuotasRoomTest : public testing::Test
{
protected:
    using Priority = TavoNotificationItemPriority;

    static ClientLimits limits()
    {
        ClientLimits limits{};
        limits.sounds = 100;
        limits.totalSounds = 100;
        limits.storedBytes = 1000;
        limits.totalStoredBytes = 1000;
        limits.totalRequestBytes = 1'000'000;
        return limits;
    }

    /// Returns whether the client may hold one more.
    bool take(const std::string &client, Priority::Enum priority = Priority::Normal,
              std::size_t bytes = 1)
    {
        try {
            const int number = ++m_last;
            m_sounds.emplace(number, quotas.charge(client, {Quotas::Sounds, 1, bytes, priority},
                                                   [this, number] { giveUp(number); }));
            return true;
        } catch (const BusError &) {
            return false;
        }
    }
    void take(const std::string &client, int count)
    {
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(take(client));
        }
    }
    std::size_t held(const std::string &client) const
    {
        return quotas.held(client, Quotas::Sounds);
    }

    Quotas quotas{limits()};
    std::vector<int> givenUp; ///< by their numbers, from 1 on

private:
    void giveUp(int number)
    {
        givenUp.push_back(number);
        m_sounds.erase(number);
    }

    std::map<int, Quotas::Charge> m_sounds;
    int m_last = 0;
};

TEST_F(QuotasRoomTest, IsMadeByTheClientThatHoldsMostForThoseThatHoldLess)
{
    take(":1.1", 60);
    take(":1.2", 40);
    take(":1.3", 10);
    EXPECT_EQ(held(":1.1"), 50U);
    EXPECT_EQ(held(":1.2"), 40U);
    EXPECT_FALSE(take(":1.1"));
    EXPECT_EQ(givenUp.front(), 1);
}

TEST_F(QuotasRoomTest, IsLeftByOneUserForAnotherHoweverManyClientsHeHas)
{
    for (int i = 0; i < 50; ++i) {
        const std::string client = ":1." + std::to_string(i);
        take(client, 2);
        quotas.setUser(client, 1000);
    }
    take(":2.1", 2);
    quotas.setUser(":2.1", 1001);
    take(":2.1", 48);
    EXPECT_EQ(held(":2.1"), 50U);
    EXPECT_FALSE(take(":2.1"));
}

TEST_F(QuotasRoomTest, IsMadeFirstByWhatClientsHaveLeftBehind)
{
    take(":1.1", 60);
    take(":1.2", 40);
    quotas.forget(":1.2");
    take(":1.3", 10);
    EXPECT_EQ(held(":1.1"), 60U);
    EXPECT_EQ(givenUp.front(), 61);
}

TEST_F(QuotasRoomTest, IsNotMadeByALittleThatIsLeftBehindWhileOthersHoldMore)
{
    take(":1.1", 5);
    quotas.forget(":1.1");
    take(":1.2", 95);
    take(":1.3", 5);
    EXPECT_EQ(held(":1.2"), 90U);
}

TEST_F(QuotasRoomTest, CountsWhatIsLeftBehindForItsUser)
{
    quotas.countRequest(":1.1");
    quotas.setUser(":1.1", 1000);
    take(":1.1", 60);
    quotas.forget(":1.1");
    take(":1.2", 40);
    quotas.setUser(":1.2", 1001);
    take(":1.3", 5);
    EXPECT_EQ(held(":1.2"), 40U);
    EXPECT_EQ(givenUp.size(), 5U);
}

TEST_F(QuotasRoomTest, IsMadeForSomethingUrgentByWhatIsNot)
{
    take(":1.1", 10);
    take(":1.2", 90);
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(take(":1.2", Priority::Urgent));
    }
    EXPECT_EQ(held(":1.1"), 10U);
    EXPECT_EQ(held(":1.2"), 90U);
}

TEST_F(QuotasRoomTest, IsNotMadeByAUserThatHoldsLittleForUrgentThingsOfOneThatHoldsMuch)
{
    take(":1.1", 10);
    quotas.setUser(":1.1", 1000);
    take(":2.1", 1);
    quotas.setUser(":2.1", 1001);
    for (int i = 0; i < 89; ++i) {
        EXPECT_TRUE(take(":2.1", Priority::Urgent));
    }
    EXPECT_TRUE(take(":2.1", Priority::Urgent));
    EXPECT_FALSE(take(":2.1", Priority::Urgent));
    EXPECT_EQ(held(":1.1"), 10U);
}

TEST_F(QuotasRoomTest, IsMadeByTheLessUrgentFirstThenByTheOlder)
{
    EXPECT_TRUE(take(":1.1", Priority::Urgent));
    take(":1.1", 98);
    EXPECT_TRUE(take(":1.1", Priority::Low));
    take(":1.2", 2);
    EXPECT_EQ(givenUp, (std::vector<int>{100, 2}));
}

TEST_F(QuotasRoomTest, IsMadeForBytesByAsManyAsItTakes)
{
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(take(":1.1", Priority::Normal, 100));
    }
    EXPECT_TRUE(take(":1.2", Priority::Normal, 250));
    EXPECT_EQ(givenUp, (std::vector<int>{1, 2, 3}));
    EXPECT_FALSE(take(":1.2", Priority::Normal, 800));
}

TEST_F(QuotasRoomTest, IsAlwaysThereForRequestsOfOrdinarySize)
{
    std::vector<Quotas::Charge> charges;
    for (int i = 0; i < 20; ++i) {
        const std::string client = ":1." + std::to_string(i);
        for (const std::size_t bytes : {500'000, 200'000, 100'000, 50'000, 10'000, 6000}) {
            try {
                charges.push_back(quotas.charge(client, {Quotas::RequestBytes, bytes}));
            } catch (const BusError &) {
            }
        }
    }
    EXPECT_NO_THROW(quotas.charge(":2.1", {Quotas::RequestBytes, 10'000}));
    EXPECT_THROW(quotas.charge(":2.1", {Quotas::RequestBytes, 20'000}), BusError);
}

class QuotasTurnTest : public QuotasTest
{
protected:
    QuotasTurnTest()
    {
        for (const char *client : {":1.1", ":1.2", ":2.1"}) {
            quotas.countRequest(client);
        }
    }

    void spend(const std::string &client, double seconds)
    {
        quotas.addTime(client, Quotas::Seconds(seconds));
    }
    bool isBefore(const std::string &client, double seconds, const std::string &other,
                  double othersSeconds) const
    {
        return quotas.turnOf(client, Quotas::Seconds(seconds)) <
               quotas.turnOf(other, Quotas::Seconds(othersSeconds));
    }
};

TEST_F(QuotasTurnTest, IsThatOfTheClientThatWillHaveTakenLessTime)
{
    EXPECT_TRUE(isBefore(":1.1", 0.1, ":1.2", 0.2));
    spend(":1.1", 0.2);
    EXPECT_FALSE(isBefore(":1.1", 0.1, ":1.2", 0.2));
    spend(":1.2", 0.2);
    EXPECT_TRUE(isBefore(":1.1", 0.1, ":1.2", 0.2));
}

TEST_F(QuotasTurnTest, IsNotLaterForTheTimeOfUnknownClientsThatHaveLeft)
{
    spend(":1.1", 5);
    quotas.forget(":1.1");
    quotas.setUser(":1.2", 1000);
    spend(":1.2", 0.1);
    EXPECT_TRUE(isBefore(":2.1", 0, ":1.2", 0));
}

TEST_F(QuotasTurnTest, IsThatOfTheUserWhoHasTakenLessTime)
{
    spend(":1.2", 0.1);
    spend(":2.1", 0.2);
    quotas.setUser(":1.1", 1000);
    quotas.setUser(":1.2", 1000);
    quotas.setUser(":2.1", 1001);
    EXPECT_TRUE(isBefore(":1.2", 1, ":2.1", 0));
    spend(":1.1", 0.2);
    EXPECT_TRUE(isBefore(":2.1", 1, ":1.1", 0));
}
} // namespace
