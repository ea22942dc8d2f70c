// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/LoadedModule.h"
#include "support/Request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using testing::StartsWith;

std::string failureWith(const QVariantHash &config)
{
    try {
        const LoadedModule module(MODULE_FILE, "player", config);
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return {};
}

TEST(PlayerConfigurationTest, RefusesAnUnknownKeyAndNamesIt)
{
    EXPECT_EQ(failureWith({{"device", "default"}}), "device: unknown key");
}

TEST(PlayerConfigurationTest, RefusesADeviceThatIsNotAString)
{
    EXPECT_EQ(failureWith({{"mainDevice", 1}}), "mainDevice: must be a string");
    EXPECT_EQ(failureWith({{"notificationsDevice", 1}}), "notificationsDevice: must be a string");
}

TEST(PlayerConfigurationTest, RefusesMusicThatIsNotAString)
{
    EXPECT_EQ(failureWith({{"music", QVariantList{"a", "b"}}}), "music: must be a string");
}

TEST(PlayerConfigurationTest, RefusesAnAttenuationThatAmplifies)
{
    EXPECT_THAT(failureWith({{"duckingAttenuation", 0.5}}), StartsWith("duckingAttenuation: "));
}

TEST(PlayerConfigurationTest, RefusesAnAttenuationBelowHearing)
{
    EXPECT_THAT(failureWith({{"duckingAttenuation", -97}}), StartsWith("duckingAttenuation: "));
}

TEST(PlayerConfigurationTest, RefusesAFadeThatIsNotAnInteger)
{
    EXPECT_EQ(failureWith({{"duckingFade", 20.5}}),
              "duckingFade: must be an integer from 0 to 5000");
}

TEST(PlayerConfigurationTest, RefusesANegativeFade)
{
    EXPECT_THAT(failureWith({{"duckingFade", -1}}), StartsWith("duckingFade: "));
}

TEST(PlayerConfigurationTest, SaysAtAReloadWhatNeedsARestart)
{
    const LoadedModule module(MODULE_FILE, "player", {{"mainDevice", "one"}});
    EXPECT_THAT(module.reconfigure({{"mainDevice", "two"}, {"duckingFade", 0}}),
                testing::ElementsAre("mainDevice"));
    EXPECT_THAT(module.reconfigure({{"notificationsDevice", "x"}, {"music", "y"}}),
                testing::ElementsAre("notificationsDevice", "mainDevice", "music"));
    EXPECT_THAT(module.reconfigure({{"mainDevice", "one"}}), testing::IsEmpty());
    EXPECT_THROW(module.reconfigure({{"duckingFade", -1}}), std::runtime_error);
}

TEST(PlayerConfigurationTest, RefusesANumberOfRetriesOutOfRange)
{
    EXPECT_THAT(failureWith({{"musicRetries", -1}}), StartsWith("musicRetries: "));
    EXPECT_THAT(failureWith({{"musicRetries", 1001}}), StartsWith("musicRetries: "));
    EXPECT_THAT(failureWith({{"musicRetries", "often"}}), StartsWith("musicRetries: "));
    EXPECT_EQ(failureWith({{"musicRetries", 0}}), "");
    EXPECT_EQ(failureWith({{"musicRetries", 1000}}), "");
}

TEST(PlayerConfigurationTest, TakesEveryKeyAtItsLimits)
{
    EXPECT_EQ(failureWith({{"notificationsDevice", "a"},
                           {"mainDevice", "b"},
                           {"music", ""},
                           {"duckingAttenuation", -96},
                           {"duckingFade", 0}}),
              "");
    EXPECT_EQ(failureWith({{"duckingAttenuation", 0}, {"duckingFade", 5000.0}}), "");
}

TEST(PlayerConfigurationTest, AllowsANullName)
{
    const LoadedModule module(MODULE_FILE, nullptr);
    EXPECT_NE(module.worker(), nullptr);
}
} // namespace
