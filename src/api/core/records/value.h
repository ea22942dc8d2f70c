// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/records/attention.h"
#include "core/records/notifications.h"
#include "core/records/player.h"
#include "core/records/powermanager.h"
#include "core/records/rows.h"

/// The value of a node or a request: one field for each kind of value.
class TavoValue : public TavoHash
{
    TAVO_RECORD(TavoValue)

    /// True or false.
    TAVO_FIELD_KEY(bool, bool_, setBool_, "bool")
    /// An integer of 32 bits.
    TAVO_FIELD_KEY(int, int_, setInt_, "int")
    /// A number.
    TAVO_FIELD_KEY(double, double_, setDouble_, "double")
    /// A text, such as an id.
    TAVO_FIELD_KEY(QString, string_, setString_, "string")
    /// The path of a node.
    TAVO_FIELD(CMPath, path, setPath)
    /// A sound to queue.
    TAVO_FIELD(TavoNotificationPlayerItem, notificationPlayerItem, setNotificationPlayerItem)
    /// How a sound started or ended.
    TAVO_FIELD(TavoNotificationPlayerResponse, notificationPlayerResponse,
               setNotificationPlayerResponse)
    /// A message to show.
    TAVO_FIELD(TavoNotificationDisplayItem, notificationDisplayItem, setNotificationDisplayItem)
    /// The message on display.
    TAVO_FIELD(TavoNotificationDisplayCurrent, displayCurrent, setDisplayCurrent)
    /// The message that ended last.
    TAVO_FIELD(TavoNotificationDisplayEnded, displayEnded, setDisplayEnded)
    /// A request to notify people of something.
    TAVO_FIELD(TavoAttentionItem, attentionItem, setAttentionItem)
    /// What has become of such a request.
    TAVO_FIELD(TavoAttentionOutcome, attentionOutcome, setAttentionOutcome)
    /// The notification that ended last, or how one is to end.
    TAVO_FIELD(TavoAttentionEnded, attentionEnded, setAttentionEnded)
    /// Whether people want to be disturbed.
    TAVO_FIELD(TavoAttentionDoNotDisturb, attentionDoNotDisturb, setAttentionDoNotDisturb)
    /// A program's request that people are not disturbed.
    TAVO_FIELD(TavoAttentionInhibition, attentionInhibition, setAttentionInhibition)
    /// People's rules.
    TAVO_FIELD(TavoAttentionRules, attentionRules, setAttentionRules)
    /// What would become of a notification.
    TAVO_FIELD(TavoAttentionTrial, attentionTrial, setAttentionTrial)
    /// Whether notifications are remembered.
    TAVO_FIELD(TavoAttentionHistory, attentionHistory, setAttentionHistory)
    /// Which notifications of the past.
    TAVO_FIELD(TavoAttentionQuery, attentionQuery, setAttentionQuery)
    /// Notifications of the past.
    TAVO_FIELD(TavoAttentionPage, attentionPage, setAttentionPage)
    /// An audio device.
    TAVO_FIELD(TavoPlayerAudioDevice, audioDevice, setAudioDevice)
    /// The state of the main audio.
    TAVO_FIELD(TavoPlayerMainAudioState, mainAudioState, setMainAudioState)
    /// The state of the power manager.
    TAVO_FIELD(TavoPowerManagerState, powerManagerState, setPowerManagerState)
};
