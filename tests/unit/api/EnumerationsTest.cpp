// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/records/enumerations.h"

#include "core/base/stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

using testing::ElementsAre;

namespace {
/// The names of the numbers from 0 on, up to the first number without a name.
template <typename Enumeration>
std::vector<std::string> names()
{
    std::vector<std::string> result;
    for (int number = 0;; ++number) {
        const QString name = Enumeration::toString(typename Enumeration::Enum(number));
        if (name == QString::number(number)) {
            return result;
        }
        result.push_back(name.toStdString());
    }
}

template <typename Enumeration>
class EnumerationTest : public testing::Test
{
};

using Enumerations =
    testing::Types<TavoNotificationItemPriority, TavoNotificationPlayerItemType,
                   TavoNotificationPlayerResponseType, TavoNotificationDisplayEnd, TavoAttentionEnd,
                   TavoAttentionState, TavoPowerManagerResources, TavoPowerModuleActions,
                   TavoPowerManagerRevokeMessageType, TavoRolesType, TavoRowsRolesType>;
TYPED_TEST_SUITE(EnumerationTest, Enumerations, );
} // namespace

TYPED_TEST(EnumerationTest, GivesTheDigitsOfNumbersWithoutAName)
{
    using Enum = typename TypeParam::Enum;
    EXPECT_EQ(TypeParam::toString(Enum(-1)), "-1");
    EXPECT_EQ(TypeParam::toString(Enum(99)), "99");
    EXPECT_EQ(TypeParam::toString(Enum(std::numeric_limits<int>::max())), "2147483647");
    EXPECT_EQ(TypeParam::toString(Enum(std::numeric_limits<int>::min())), "-2147483648");
}

TEST(EnumerationNamesTest, OfPriorities)
{
    EXPECT_THAT(names<TavoNotificationItemPriority>(),
                ElementsAre("Low", "Normal", "High", "Urgent"));
}

TEST(EnumerationNamesTest, OfSoundTypes)
{
    EXPECT_THAT(names<TavoNotificationPlayerItemType>(),
                ElementsAre("Uri", "Data", "Stream", "Fake"));
}

TEST(EnumerationNamesTest, OfResponses)
{
    EXPECT_THAT(names<TavoNotificationPlayerResponseType>(),
                ElementsAre("Unknown", "Started", "Finished", "Cancelled", "Failed"));
}

TEST(EnumerationNamesTest, OfEndsOfMessages)
{
    EXPECT_THAT(names<TavoNotificationDisplayEnd>(),
                ElementsAre("Unknown", "Expired", "Cancelled", "Closed", "Overtaken"));
}

TEST(EnumerationNamesTest, OfEndsOfNotifications)
{
    EXPECT_THAT(names<TavoAttentionEnd>(), ElementsAre("Unknown", "Expired", "Closed", "Dismissed",
                                                       "ActedOn", "Silenced", "Failed"));
}

TEST(EnumerationNamesTest, OfStatesOfNotificationsOfThePast)
{
    EXPECT_THAT(names<TavoAttentionState>(),
                ElementsAre("Unknown", "Shown", "Seen", "Dismissed", "ActedOn", "Expired",
                            "Silenced", "Refused", "LeftOpen"));
}

TEST(EnumerationNamesTest, OfPowerResources)
{
    EXPECT_THAT(names<TavoPowerManagerResources>(),
                ElementsAre("Processor", "Display", "Audio", "Network"));
}

TEST(EnumerationNamesTest, OfPowerActions)
{
    EXPECT_THAT(names<TavoPowerModuleActions>(), ElementsAre("None", "Acquire", "Release"));
}

TEST(EnumerationNamesTest, OfRevokeMessages)
{
    EXPECT_THAT(names<TavoPowerManagerRevokeMessageType>(), ElementsAre("Revoked", "PostRevoked"));
}

TEST(EnumerationNamesTest, OfRoles)
{
    EXPECT_THAT(names<TavoRolesType>(),
                ElementsAre("None", "Container", "Action", "Value", "Switch", "Media", "Text"));
}

TEST(EnumerationNamesTest, OfRowsRoles)
{
    EXPECT_THAT(names<TavoRowsRolesType>(), ElementsAre("Title", "Value", "Path"));
}

TEST(EnumerationNumbersTest, AreThoseThatPeersRelyOn)
{
    EXPECT_EQ(int(TavoNotificationPlayerResponseType::Started), 1);
    EXPECT_EQ(int(TavoNotificationPlayerResponseType::Failed), 4);
    EXPECT_EQ(int(TavoNotificationPlayerItemType::Uri), 0);
    EXPECT_EQ(int(TavoNotificationPlayerItemType::Fake), 3);
    EXPECT_EQ(int(TavoNotificationDisplayEnd::Expired), 1);
    EXPECT_EQ(int(TavoNotificationDisplayEnd::Overtaken), 4);
    EXPECT_EQ(int(TavoPowerManagerResources::Audio), 2);
    EXPECT_EQ(int(TavoPowerModuleActions::Acquire), 1);
    EXPECT_EQ(int(TavoPowerModuleActions::Release), 2);
    EXPECT_EQ(int(TavoPowerManagerRevokeMessageType::Revoked), 0);
    EXPECT_EQ(int(TavoPowerManagerRevokeMessageType::PostRevoked), 1);
    EXPECT_EQ(int(TavoRolesType::Text), 6);
    EXPECT_EQ(int(TavoRowsRolesType::Title), 0);
}
