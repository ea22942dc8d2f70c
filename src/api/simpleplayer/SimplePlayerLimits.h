// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/export.h"

#include <QtGlobal>

/// What a player accepts from a sound or a server, so that neither can exhaust the device.
struct TAVO_SIMPLEPLAYER_EXPORT SimplePlayerLimits
{
    /// The size that a sound file may decode to, as 32 bit samples: 1 GiB is 46 minutes of stereo at
    /// 48 kHz. Players decode as they play and never hold this much.
    qint64 maxSoundBytes = qint64(1) << 30;

    /// How long a sound file may take to arrive over http, and how long a raw stream may bring
    /// nothing.
    int httpTimeoutMs = 20000;

    /// The size of a sound file that must be collected before it can be decoded (over http, or from
    /// a FIFO). Raw streams have no end and no limit.
    qint64 httpMaxBytes = qint64(64) << 20;

    /// What a player starts out with. Called from any thread.
    static SimplePlayerLimits defaults();

    /// For the program, which calls it before there is a player or a second thread. A module gives
    /// its own players other limits.
    static void setDefaults(const SimplePlayerLimits &limits);
};
