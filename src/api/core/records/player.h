// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/cmpath.h"
#include "core/records/tavohash.h"
#include "core/records/tavolist.h"

/// Value: a TavoValue with audioDevice(), the output device chosen for notifications.
TAVO_API_EXPORT CMPath TavoPlayerAlsaDeviceNotificationsPath();

/// Value: a TavoValue with audioDevice(), the output device of the main audio.
TAVO_API_EXPORT CMPath TavoPlayerAlsaDeviceMainPath();

/// Request: plays a sound file as the main audio, in a loop. Value: a TavoValue with string_(), the
/// file's path or URI, or just a string. Without it, the last source is played, or goes on if it is
/// playing. Reply: empty, or an error if the file cannot be played.
TAVO_API_EXPORT CMPath TavoPlayerMainAudioPlayPath();

/// Request: ends the main audio. The value is not read. Reply: empty.
TAVO_API_EXPORT CMPath TavoPlayerMainAudioStopPath();

/// Request: sets the user's volume, which ducking does not change. Value: a TavoValue with
/// double_(), or just a number, from 0.0 (silent) to 1.0. Reply: empty.
TAVO_API_EXPORT CMPath TavoPlayerMainAudioVolumePath();

/// Value: a TavoValue with mainAudioState().
TAVO_API_EXPORT CMPath TavoPlayerMainAudioStatePath();

/// Request: ducks the main audio, or unducks it. Value: a TavoPlayerAudioDuckingRequest.
TAVO_API_EXPORT CMPath TavoPlayerMainAudioDuckingPath();

/// Ducks the main audio for a requester. It stays ducked until every requester has unducked it.
class TavoPlayerAudioDuckingRequest : public TavoHash
{
    TAVO_RECORD(TavoPlayerAudioDuckingRequest)

    /// True to duck, false to unduck.
    TAVO_FIELD(bool, duckAudio, setDuckAudio)
    /// A name of the requester's choice; the same to duck and to unduck.
    TAVO_FIELD(QString, requester, setRequester)
};

/// An audio output device.
class TavoPlayerAudioDevice : public TavoHash
{
    TAVO_RECORD(TavoPlayerAudioDevice)

    /// The ALSA device's name.
    TAVO_FIELD(QString, device, setDevice)
};

/// The state of the main audio.
class TavoPlayerMainAudioState : public TavoHash
{
    TAVO_RECORD(TavoPlayerMainAudioState)

    /// Whether a source plays, ducked or not.
    TAVO_FIELD(bool, playing, setPlaying)
    /// The path or URI of the file that plays, or was played last.
    TAVO_FIELD(QString, source, setSource)
    /// The user's volume, from 0.0 to 1.0.
    TAVO_FIELD(double, volume, setVolume)
    /// Whether anybody has ducked it.
    TAVO_FIELD(bool, ducked, setDucked)
    /// The requesters that have ducked it, in the order of their requests.
    TAVO_FIELD(TavoList<QString>, requesters, setRequesters)
    /// Why the source does not play, as a sentence for people; empty if nothing failed.
    TAVO_FIELD(QString, error, setError)
};
