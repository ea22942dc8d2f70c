// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/cmpath.h"
#include "core/tavo/export.h"
#include "core/tavo/tavohash.h"

/// Value: a TavoValue with audioDevice(), the output device chosen for notifications.
TAVO_API_EXPORT CMPath TavoPlayerAlsaDeviceNotificationsPath();

/// Request: ducks the main audio, or restores it. Value: a TavoPlayerAudioDuckingRequest.
TAVO_API_EXPORT CMPath TavoPlayerMainAudioDuckingPath();

/// Ducks the main audio for a requester; it stays ducked while any requester wants it so.
class TavoPlayerAudioDuckingRequest : public TavoHash
{
    TAVO_RECORD(TavoPlayerAudioDuckingRequest)

    /// True to duck, false to restore.
    TAVO_FIELD(bool, duckAudio, setDuckAudio)
    TAVO_FIELD(QString, requester, setRequester)
};

/// An audio output device.
class TavoPlayerAudioDevice : public TavoHash
{
    TAVO_RECORD(TavoPlayerAudioDevice)

    /// The ALSA device's name.
    TAVO_FIELD(QString, device, setDevice)
};
