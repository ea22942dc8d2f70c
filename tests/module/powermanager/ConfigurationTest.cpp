// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/LoadedModule.h"
#include "support/Request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
std::string errorWith(const QVariantHash &config)
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
    EXPECT_EQ(errorWith({{"revokeTimeOut", 100}}), "revokeTimeOut: unknown key");
}

TEST(PowerManagerConfigurationTest, RefusesATimeoutThatIsNotANumber)
{
    EXPECT_THAT(errorWith({{"revokeTimeout", "100"}}), testing::StartsWith("revokeTimeout: "));
}

TEST(PowerManagerConfigurationTest, RefusesATimeoutOutOfRange)
{
    EXPECT_THAT(errorWith({{"revokeTimeout", 0}}), testing::StartsWith("revokeTimeout: "));
}

TEST(PowerManagerConfigurationTest, TakesAnIntegerFromJson)
{
    EXPECT_EQ(errorWith({{"revokeTimeout", 100.0}}), "");
}

TEST(PowerManagerConfigurationTest, LeavesNoNodeBehindWhenItRefuses)
{
    errorWith({{"unknown", 1}});
    const Request request(TavoPowerManagerStandbyPath(), QVariant());
    EXPECT_EQ(request.error().name(), CMErrors::noSuchNode());
}

TEST(PowerManagerConfigurationTest, AllowsANullName)
{
    const LoadedModule module(MODULE_FILE, nullptr);
    EXPECT_NE(module.worker(), nullptr);
}
} // namespace
