// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/player/PlayerTest.h"

namespace {
class DefaultAudioDeviceTest : public PlayerTest
{
};

TEST_F(DefaultAudioDeviceTest, PublishesDefaultForBothWithoutAConfiguration)
{
    EXPECT_EQ(valueAt(TavoPlayerAlsaDeviceNotificationsPath()).audioDevice().device(), "default");
    EXPECT_EQ(valueAt(TavoPlayerAlsaDeviceMainPath()).audioDevice().device(), "default");
}

class AudioDeviceTest : public PlayerTest
{
protected:
    AudioDeviceTest()
        : PlayerTest({{"notificationsDevice", "buzzer"}, {"mainDevice", "speakers"}})
    {
    }
};

TEST_F(AudioDeviceTest, PublishesTheConfiguredDevices)
{
    EXPECT_EQ(valueAt(TavoPlayerAlsaDeviceNotificationsPath()).audioDevice().device(), "buzzer");
    EXPECT_EQ(valueAt(TavoPlayerAlsaDeviceMainPath()).audioDevice().device(), "speakers");
}

TEST_F(AudioDeviceTest, RefusesToHaveADeviceSet)
{
    const Request request(TavoPlayerAlsaDeviceNotificationsPath(), QVariant("other"));
    EXPECT_FALSE(request.succeeds());
    EXPECT_EQ(request.error().name(), CMErrors::notSupported());
}
} // namespace
