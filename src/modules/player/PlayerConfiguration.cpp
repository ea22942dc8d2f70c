// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PlayerConfiguration.h"

#include <core/tavo.h>

namespace {
/// Loud enough to hear that the music goes on, and quieter than any notification.
constexpr double defaultAttenuationDb = -20.0;
/// Below this, 16-bit sound is silent.
constexpr double minAttenuationDb = -96.0;

/// Without a click, and finished before the notification begins.
constexpr int defaultFadeMs = 40;
constexpr int maxFadeMs = 5000;

/// With the delays between them, a minute and a half.
constexpr int defaultRetries = 9;
constexpr int maxRetries = 1000;
} // namespace

PlayerConfiguration PlayerConfiguration::fromHash(const QVariantHash &config)
{
    const QString defaultDevice = QStringLiteral("default");
    TavoConfiguration reader(config);
    PlayerConfiguration configuration;
    configuration.notificationsDevice =
        reader.string(QStringLiteral("notificationsDevice"), defaultDevice);
    configuration.mainDevice = reader.string(QStringLiteral("mainDevice"), defaultDevice);
    configuration.music = reader.string(QStringLiteral("music"), {});
    configuration.musicRetries =
        reader.integer(QStringLiteral("musicRetries"), defaultRetries, 0, maxRetries);
    configuration.duckingAttenuation = reader.number(QStringLiteral("duckingAttenuation"),
                                                     defaultAttenuationDb, minAttenuationDb, 0);
    configuration.duckingFade =
        reader.integer(QStringLiteral("duckingFade"), defaultFadeMs, 0, maxFadeMs);
    reader.finish();
    return configuration;
}
