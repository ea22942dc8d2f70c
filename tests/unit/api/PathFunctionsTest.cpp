// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/tavo.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {
struct WellKnown
{
    CMPath (*function)();
    const char *text;
};

const std::vector<WellKnown> wellKnown{
    {&TavoAttentionPath, "/attention"},
    {&TavoAttentionClosePath, "/attention/close"},
    {&TavoAttentionDoNotDisturbPath, "/attention/doNotDisturb"},
    {&TavoAttentionEndedPath, "/attention/ended"},
    {&TavoAttentionHistoryPath, "/attention/history"},
    {&TavoAttentionHistoryStatePath, "/attention/historyState"},
    {&TavoAttentionInhibitPath, "/attention/inhibit"},
    {&TavoAttentionMarkSeenPath, "/attention/markSeen"},
    {&TavoAttentionMessagesPath, "/attention/messages"},
    {&TavoAttentionMissedPath, "/attention/missed"},
    {&TavoAttentionNotifyPath, "/attention/notify"},
    {&TavoAttentionReplacePath, "/attention/replace"},
    {&TavoAttentionRulesPath, "/attention/rules"},
    {&TavoAttentionSetDoNotDisturbPath, "/attention/setDoNotDisturb"},
    {&TavoAttentionSoundPath, "/attention/sound"},
    {&TavoAttentionTryPath, "/attention/try"},
    {&TavoNotificationsPath, "/notifications"},
    {&TavoNotificationPlayerEnqueuePath, "/notifications/player/enqueue"},
    {&TavoNotificationPlayerCancelPath, "/notifications/player/cancel"},
    {&TavoNotificationPlayerIsPlayingPath, "/notifications/player/isPlaying"},
    {&TavoNotificationDisplayOpenPath, "/notifications/display/open"},
    {&TavoNotificationDisplayCancelNotifyPath, "/notifications/display/cancelNotify"},
    {&TavoNotificationDisplayQueuePath, "/notifications/display/queue"},
    {&TavoNotificationDisplayCurrentPath, "/notifications/display/current"},
    {&TavoNotificationDisplayEndedPath, "/notifications/display/ended"},
    {&TavoNotificationDisplaySimpleMessageNodePath, "/notifications/display/simpleMessageNode"},
    {&TavoPlayerAlsaDeviceNotificationsPath, "/player/alsaDevice/notifications"},
    {&TavoPlayerAlsaDeviceMainPath, "/player/alsaDevice/main"},
    {&TavoPlayerMainAudioPlayPath, "/player/mainAudio/play"},
    {&TavoPlayerMainAudioStatePath, "/player/mainAudio/state"},
    {&TavoPlayerMainAudioStopPath, "/player/mainAudio/stop"},
    {&TavoPlayerMainAudioVolumePath, "/player/mainAudio/volume"},
    {&TavoPlayerMainAudioDuckingPath, "/player/mainAudio/ducking"},
    {&TavoPowerManagerModuleRegisterPath, "/powerManager/moduleRegister"},
    {&TavoPowerManagerResourceRequestPath, "/powerManager/resourceRequest"},
    {&TavoPowerManagerResumePath, "/powerManager/resume"},
    {&TavoPowerManagerStandbyPath, "/powerManager/standby"},
    {&TavoPowerManagerStatePath, "/powerManager/state"},
};
} // namespace

TEST(PathFunctionsTest, GiveThePublishedTexts)
{
    for (const WellKnown &known : wellKnown) {
        EXPECT_EQ(known.function().toString(), known.text);
    }
}

TEST(PathFunctionsTest, GiveDifferentPaths)
{
    std::set<std::string> texts;
    for (const WellKnown &known : wellKnown) {
        texts.insert(known.function().toString().toStdString());
    }
    EXPECT_EQ(texts.size(), wellKnown.size());
}

TEST(PathFunctionsTest, GiveTheSamePathEachTime)
{
    for (const WellKnown &known : wellKnown) {
        EXPECT_EQ(known.function(), known.function());
    }
}

TEST(PathFunctionsTest, PutTheModulesNodesBelowTheModulesPath)
{
    const QString prefix = TavoNotificationsPath().toString() + '/';
    EXPECT_TRUE(TavoNotificationPlayerEnqueuePath().toString().startsWith(prefix));
    EXPECT_TRUE(TavoNotificationDisplayQueuePath().toString().startsWith(prefix));
}

TEST(PathFunctionsTest, NameTheModule)
{
    EXPECT_EQ(TavoNotificationsName(), "notifications");
}
