// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/LoadedModule.h"
#include "support/Request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
std::string failureWith(const QVariantHash &config)
{
    try {
        const LoadedModule module(MODULE_FILE, "powermanager", config);
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return {};
}

TEST(PowerManagerConfigurationTest, RefusesAnUnknownKeyAndNamesIt)
{
    EXPECT_EQ(failureWith({{"revokeTimeOut", 100}}), "revokeTimeOut: unknown key");
}

TEST(PowerManagerConfigurationTest, RefusesATimeoutThatIsNoNumber)
{
    EXPECT_THAT(failureWith({{"revokeTimeout", "100"}}), testing::StartsWith("revokeTimeout: "));
}

TEST(PowerManagerConfigurationTest, RefusesATimeoutOutOfRange)
{
    EXPECT_THAT(failureWith({{"revokeTimeout", 0}}), testing::StartsWith("revokeTimeout: "));
}

TEST(PowerManagerConfigurationTest, TakesAWholeNumberFromJson)
{
    EXPECT_EQ(failureWith({{"revokeTimeout", 100.0}}), "");
}

TEST(PowerManagerConfigurationTest, LeavesNoNodeBehindWhenItRefuses)
{
    failureWith({{"unknown", 1}});
    const Request request(TavoPowerManagerStandbyPath(), QVariant());
    EXPECT_EQ(request.error().name(), CMErrors::noSuchNode());
}

TEST(PowerManagerConfigurationTest, AllowsANullName)
{
    const LoadedModule module(MODULE_FILE, nullptr);
    EXPECT_NE(module.worker(), nullptr);
}
} // namespace
