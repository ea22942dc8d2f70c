// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/records/notifications.h"
#include "core/records/player.h"
#include "core/records/powermanager.h"
#include "core/records/rows.h"

/// The value of a node or a request: one field for each kind of value.
class TavoValue : public TavoHash
{
    TAVO_RECORD(TavoValue)

    TAVO_FIELD_KEY(bool, bool_, setBool_, "bool")
    TAVO_FIELD_KEY(int, int_, setInt_, "int")
    TAVO_FIELD_KEY(double, double_, setDouble_, "double")
    TAVO_FIELD_KEY(QString, string_, setString_, "string")
    TAVO_FIELD(CMPath, path, setPath)
    TAVO_FIELD(TavoNotificationPlayerItem, notificationPlayerItem, setNotificationPlayerItem)
    TAVO_FIELD(TavoNotificationPlayerResponse, notificationPlayerResponse,
               setNotificationPlayerResponse)
    TAVO_FIELD(TavoNotificationDisplayItem, notificationDisplayItem, setNotificationDisplayItem)
    TAVO_FIELD(TavoNotificationDisplayCurrent, displayCurrent, setDisplayCurrent)
    TAVO_FIELD(TavoNotificationDisplayEnded, displayEnded, setDisplayEnded)
    TAVO_FIELD(TavoPlayerAudioDevice, audioDevice, setAudioDevice)
    TAVO_FIELD(TavoPlayerMainAudioState, mainAudioState, setMainAudioState)
    TAVO_FIELD(TavoPowerManagerState, powerManagerState, setPowerManagerState)
};
