// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariantHash>

/// The configuration of the player. The members have the names of the keys.
struct PlayerConfiguration
{
    QString notificationsDevice; ///< ALSA device for notifications
    QString mainDevice;          ///< ALSA device for the main audio
    QString music;               ///< path or URI of the music to play at the start; may be empty
    int musicRetries;            ///< how often music that failed is tried again
    double duckingAttenuation;   ///< dB, 0 or less
    int duckingFade;             ///< ms, the length of a fade

    /// Throws a std::runtime_error that names the key if the configuration is invalid.
    static PlayerConfiguration fromHash(const QVariantHash &config);
};
