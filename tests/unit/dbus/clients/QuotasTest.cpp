// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/clients/Quotas.h"

#include <bus/BusError.h>

#include <gtest/gtest.h>

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
        limits.totalRequestBytes = 100;
        return limits;
    }

    std::string refusal(const std::string &client, Quotas::Kind kind, std::size_t amount = 1)
    {
        try {
            quotas.charge(client, kind, amount);
        } catch (const BusError &error) {
            return error.message();
        }
        return {};
    }

    Quotas quotas{limits()};
};

TEST_F(QuotasTest, CountWhatIsHeldUntilItIsGivenBack)
{
    Quotas::Charge first = quotas.charge(":1.1", Quotas::OpenNotifications);
    {
        const Quotas::Charge second = quotas.charge(":1.1", Quotas::OpenNotifications);
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
    Quotas::Charge charge = quotas.charge(":1.1", Quotas::OpenNotifications);
    charge = quotas.charge(":1.2", Quotas::OpenNotifications);
    EXPECT_EQ(charge.client(), ":1.2");
    EXPECT_EQ(quotas.held(":1.1", Quotas::OpenNotifications), 0);
    EXPECT_EQ(quotas.held(":1.2", Quotas::OpenNotifications), 1);
}

TEST_F(QuotasTest, CountWhatOutlivesItsClientOnlyInTheTotal)
{
    std::vector<Quotas::Charge> charges;
    charges.push_back(quotas.charge(":1.1", Quotas::OpenNotifications));
    charges.push_back(quotas.charge(":1.1", Quotas::OpenNotifications));
    quotas.forget(":1.1");
    EXPECT_EQ(charges.front().client(), "");
    EXPECT_FALSE(quotas.knows(":1.1"));
    EXPECT_EQ(quotas.held(":1.1", Quotas::OpenNotifications), 0);
    const std::string totalReached =
        "All clients together may have no more than 3 notifications open";
    // The next client by this name, on another bus, holds nothing yet.
    charges.push_back(quotas.charge(":1.1", Quotas::OpenNotifications));
    EXPECT_EQ(refusal(":1.1", Quotas::OpenNotifications), totalReached);
    charges.erase(charges.begin());
    EXPECT_EQ(refusal(":1.1", Quotas::OpenNotifications), "");
    charges.clear();
    EXPECT_EQ(quotas.held(":1.1", Quotas::OpenNotifications), 0);
}

TEST_F(QuotasTest, LeaveAsMuchForTheOthersWhereOneClientHasNoLimitOfItsOwn)
{
    const Quotas::Charge first = quotas.charge(":1.1", Quotas::RequestBytes, 50);
    const std::string totalReached = "All clients together may have no more than 100 bytes of "
                                     "requests that wait for their replies";
    EXPECT_EQ(refusal(":1.1", Quotas::RequestBytes, 1), totalReached);
    const Quotas::Charge second = quotas.charge(":1.2", Quotas::RequestBytes, 25);
    EXPECT_EQ(refusal(":1.2", Quotas::RequestBytes, 1), totalReached);
    EXPECT_EQ(refusal(":1.3", Quotas::RequestBytes, 12), "");
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
} // namespace
