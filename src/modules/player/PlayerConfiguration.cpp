// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PlayerConfiguration.h"

#include <core/tavo.h>

namespace {
/// Loud enough to know that the music goes on, low enough to stay below any notification.
constexpr double defaultAttenuationDb = -20.0;
/// Below it 16-bit sound is silent anyway.
constexpr double leastAttenuationDb = -96.0;

/// No click, and done before a notification has begun.
constexpr int defaultFadeMs = 40;
constexpr int longestFadeMs = 5000;

/// A minute and a half in all, by the pauses between them.
constexpr int defaultRetries = 9;
constexpr int mostRetries = 1000;

constexpr int longestHttpTimeoutMs = 600'000;
constexpr qint64 bytesPerMiB = qint64(1) << 20;
constexpr int mostMiB = 65536;

/// A size that is configured in MiB.
qint64 readSize(TavoConfiguration &reader, const QString &key, qint64 fallback)
{
    return reader.integer(key, int(fallback / bytesPerMiB), 1, mostMiB) * bytesPerMiB;
}
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
        reader.integer(QStringLiteral("musicRetries"), defaultRetries, 0, mostRetries);
    configuration.duckingAttenuation = reader.number(QStringLiteral("duckingAttenuation"),
                                                     defaultAttenuationDb, leastAttenuationDb, 0);
    configuration.duckingFade =
        reader.integer(QStringLiteral("duckingFade"), defaultFadeMs, 0, longestFadeMs);
    SimplePlayerLimits &limits = configuration.limits;
    limits.maxSoundBytes = readSize(reader, QStringLiteral("soundLimit"), limits.maxSoundBytes);
    limits.httpMaxBytes = readSize(reader, QStringLiteral("httpLimit"), limits.httpMaxBytes);
    limits.httpTimeoutMs = reader.integer(QStringLiteral("httpTimeout"), limits.httpTimeoutMs, 1,
                                          longestHttpTimeoutMs);
    reader.finish();
    return configuration;
}
