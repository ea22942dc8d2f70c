// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariantHash>

/// The configuration of the player, by the keys of the same names.
struct PlayerConfiguration
{
    QString notificationsDevice; ///< ALSA device for notifications
    QString mainDevice;          ///< ALSA device for the main audio
    QString music;               ///< path or URI of what to play from the start; empty: nothing
    int musicRetries;            ///< how often music that broke off is tried again
    double duckingAttenuation;   ///< dB, 0 or less
    int duckingFade;             ///< ms

    /// Throws a std::runtime_error that names the key when the configuration can't be used.
    static PlayerConfiguration fromHash(const QVariantHash &config);
};
