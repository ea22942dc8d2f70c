// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DbusConfiguration.h"

#include <core/base/configuration.h>

namespace {
constexpr int defaultTimeoutMs = 5000;
constexpr int longestTimeoutMs = 24 * 60 * 60 * 1000;

/// More than anybody reads, and little for a device's memory.
constexpr int defaultOpenNotifications = 1000;
constexpr int defaultTotalOpenNotifications = 10'000;
constexpr int defaultSounds = 256;
constexpr int defaultTotalSounds = 1000;
/// Far above what people cause, far below what keeps a device busy.
constexpr int defaultRequestsPerSecond = 2000;
constexpr int defaultSubscriptions = 1000;
constexpr int defaultInboxes = 100;
constexpr int mostOfAny = 1'000'000;

/// A MiB of text or bytes, and what goes with it.
constexpr int defaultValueBytes = (1 << 20) + (1 << 16);
constexpr int leastValueBytes = 1024;
/// Half of what a bus carries in one message.
constexpr int mostValueBytes = 1 << 26;

/// Half of what a system's bus lets everybody leave unread of a sender's.
constexpr int defaultTotalUnreadBytes = 1 << 26;
constexpr int defaultUnreadBytes = defaultTotalUnreadBytes / 4;
constexpr int defaultTotalRequestBytes = 1 << 26;
constexpr int leastManyBytes = 1 << 20;
constexpr int mostManyBytes = 1 << 30;

DbusConfiguration::Limits readLimits(TavoConfiguration reader)
{
    DbusConfiguration::Limits limits;
    limits.openNotifications =
        reader.integer(QStringLiteral("openNotifications"), defaultOpenNotifications, 1, mostOfAny);
    limits.totalOpenNotifications = reader.integer(QStringLiteral("totalOpenNotifications"),
                                                   defaultTotalOpenNotifications, 1, mostOfAny);
    limits.sounds = reader.integer(QStringLiteral("sounds"), defaultSounds, 1, mostOfAny);
    limits.totalSounds =
        reader.integer(QStringLiteral("totalSounds"), defaultTotalSounds, 1, mostOfAny);
    limits.requestsPerSecond =
        reader.integer(QStringLiteral("requestsPerSecond"), defaultRequestsPerSecond, 0, mostOfAny);
    limits.valueBytes = reader.integer(QStringLiteral("valueBytes"), defaultValueBytes,
                                       leastValueBytes, mostValueBytes);
    limits.subscriptions =
        reader.integer(QStringLiteral("subscriptions"), defaultSubscriptions, 0, mostOfAny);
    limits.inboxes = reader.integer(QStringLiteral("inboxes"), defaultInboxes, 0, mostOfAny);
    limits.totalRequestBytes =
        reader.integer(QStringLiteral("totalRequestBytes"), defaultTotalRequestBytes,
                       leastManyBytes, mostManyBytes);
    limits.unreadBytes = reader.integer(QStringLiteral("unreadBytes"), defaultUnreadBytes,
                                        leastManyBytes, mostManyBytes);
    limits.totalUnreadBytes = reader.integer(
        QStringLiteral("totalUnreadBytes"), defaultTotalUnreadBytes, leastManyBytes, mostManyBytes);
    reader.finish();
    return limits;
}

DbusConfiguration::Sounds readSounds(TavoConfiguration reader)
{
    DbusConfiguration::Sounds sounds;
    // A scheme means the same in any case.
    for (const QString &scheme :
         reader.stringList(QStringLiteral("schemes"), {QStringLiteral("file")})) {
        sounds.schemes.append(scheme.toLower());
    }
    sounds.folders = reader.stringList(QStringLiteral("folders"), {QStringLiteral("/")});
    sounds.theme = reader.string(QStringLiteral("theme"), QStringLiteral("freedesktop"));
    reader.finish();
    return sounds;
}
} // namespace

DbusConfiguration DbusConfiguration::fromHash(const QVariantHash &config)
{
    TavoConfiguration reader(config);
    DbusConfiguration configuration;
    configuration.bus = reader.string(QStringLiteral("bus"), QStringLiteral("session"));
    configuration.notifications = reader.boolean(QStringLiteral("notifications"), true);
    configuration.defaultTimeoutMs =
        reader.integer(QStringLiteral("defaultTimeout"), ::defaultTimeoutMs, 0, longestTimeoutMs);
    configuration.criticalTimeoutMs =
        reader.integer(QStringLiteral("criticalTimeout"), 0, 0, longestTimeoutMs);
    configuration.limits = readLimits(reader.section(QStringLiteral("limits")));
    configuration.sounds = readSounds(reader.section(QStringLiteral("sounds")));
    reader.finish();
    return configuration;
}
