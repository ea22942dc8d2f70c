// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/export.h"

#include <QtGlobal>

/// What the players accept from a sound or a server, so that neither can exhaust the device. One
/// set for the process; a player reads it when it opens its sound.
struct TAVO_SIMPLEPLAYER_EXPORT SimplePlayerLimits
{
    /// The most that a sound file may decode to, as 32 bit samples: 1 GiB is 46 minutes of stereo
    /// at 48 kHz. Players decode as they play and never hold this much.
    qint64 maxSoundBytes = qint64(1) << 30;

    /// How long a sound file may take to arrive over http, and how long a raw stream may bring
    /// nothing.
    int httpTimeoutMs = 20000;

    /// The most that a sound file that must be collected before it can be decoded (over http, or
    /// from a FIFO) may measure. Raw streams have no end and no limit.
    qint64 httpMaxBytes = qint64(64) << 20;

    /// The limits in force; from any thread.
    static SimplePlayerLimits current();

    /// Puts limits in force for players that start from now on; from any thread.
    static void setCurrent(const SimplePlayerLimits &limits);
};
