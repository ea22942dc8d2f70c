// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/export.h"

#include <QtGlobal>

/// The limits of a player, so that no sound and no server can exhaust the device.
struct TAVO_SIMPLEPLAYER_EXPORT SimplePlayerLimits
{
    /// The maximum size of a decoded sound file, in 32-bit samples: 1 GiB is 46 minutes of stereo
    /// at 48 kHz. Players decode while they play, and never hold that much.
    qint64 maxSoundBytes = qint64(1) << 30;

    /// How long fetching a sound file over http may take, and how long a raw stream may pause.
    int httpTimeoutMs = 20000;

    /// How long a FIFO may have nothing to read, counted from its opening and again after each
    /// pause.
    int fifoTimeoutMs = 5000;

    /// The maximum size of a sound file that has to be collected before it is decoded (over http,
    /// or from a FIFO), and is kept in memory while it plays or is paused. Raw streams have no limit.
    qint64 httpMaxBytes = qint64(16) << 20;

    /// The limits that a player is made with. Called from any thread.
    static SimplePlayerLimits defaults();

    /// The limits of all players that are made from now on. Called by the program only, from any thread. A
    /// module sets the limits of its own players instead.
    static void setDefaults(const SimplePlayerLimits &limits);
};
