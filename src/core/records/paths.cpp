// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/records/attention.h"
#include "core/records/notifications.h"
#include "core/records/player.h"
#include "core/records/powermanager.h"

// Every path is made once, so that a call only counts a reference.
#define TAVO_PATH(function, text)                                                                  \
    CMPath function()                                                                              \
    {                                                                                              \
        static const CMPath path{QStringLiteral(text)};                                            \
        return path;                                                                               \
    }

TAVO_PATH(TavoAttentionPath, "/attention")
TAVO_PATH(TavoAttentionClosePath, "/attention/close")
TAVO_PATH(TavoAttentionDoNotDisturbPath, "/attention/doNotDisturb")
TAVO_PATH(TavoAttentionEndedPath, "/attention/ended")
TAVO_PATH(TavoAttentionHistoryPath, "/attention/history")
TAVO_PATH(TavoAttentionHistoryStatePath, "/attention/historyState")
TAVO_PATH(TavoAttentionInhibitPath, "/attention/inhibit")
TAVO_PATH(TavoAttentionMarkSeenPath, "/attention/markSeen")
TAVO_PATH(TavoAttentionMessagesPath, "/attention/messages")
TAVO_PATH(TavoAttentionMissedPath, "/attention/missed")
TAVO_PATH(TavoAttentionNotifyPath, "/attention/notify")
TAVO_PATH(TavoAttentionReplacePath, "/attention/replace")
TAVO_PATH(TavoAttentionRulesPath, "/attention/rules")
TAVO_PATH(TavoAttentionSetDoNotDisturbPath, "/attention/setDoNotDisturb")
TAVO_PATH(TavoAttentionSoundPath, "/attention/sound")
TAVO_PATH(TavoAttentionTryPath, "/attention/try")
TAVO_PATH(TavoNotificationsPath, "/notifications")
TAVO_PATH(TavoNotificationPlayerEnqueuePath, "/notifications/player/enqueue")
TAVO_PATH(TavoNotificationPlayerCancelPath, "/notifications/player/cancel")
TAVO_PATH(TavoNotificationPlayerIsPlayingPath, "/notifications/player/isPlaying")
TAVO_PATH(TavoNotificationDisplayOpenPath, "/notifications/display/open")
TAVO_PATH(TavoNotificationDisplayCancelNotifyPath, "/notifications/display/cancelNotify")
TAVO_PATH(TavoNotificationDisplayQueuePath, "/notifications/display/queue")
TAVO_PATH(TavoNotificationDisplayCurrentPath, "/notifications/display/current")
TAVO_PATH(TavoNotificationDisplayEndedPath, "/notifications/display/ended")
TAVO_PATH(TavoNotificationDisplaySimpleMessageNodePath, "/notifications/display/simpleMessageNode")
TAVO_PATH(TavoPlayerAlsaDeviceNotificationsPath, "/player/alsaDevice/notifications")
TAVO_PATH(TavoPlayerAlsaDeviceMainPath, "/player/alsaDevice/main")
TAVO_PATH(TavoPlayerMainAudioDuckingPath, "/player/mainAudio/ducking")
TAVO_PATH(TavoPlayerMainAudioPlayPath, "/player/mainAudio/play")
TAVO_PATH(TavoPlayerMainAudioStatePath, "/player/mainAudio/state")
TAVO_PATH(TavoPlayerMainAudioStopPath, "/player/mainAudio/stop")
TAVO_PATH(TavoPlayerMainAudioVolumePath, "/player/mainAudio/volume")
TAVO_PATH(TavoPowerManagerModuleRegisterPath, "/powerManager/moduleRegister")
TAVO_PATH(TavoPowerManagerResourceRequestPath, "/powerManager/resourceRequest")
TAVO_PATH(TavoPowerManagerResumePath, "/powerManager/resume")
TAVO_PATH(TavoPowerManagerStandbyPath, "/powerManager/standby")
TAVO_PATH(TavoPowerManagerStatePath, "/powerManager/state")

QString TavoNotificationsName()
{
    return QStringLiteral("notifications");
}
