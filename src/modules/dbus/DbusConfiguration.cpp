// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DbusConfiguration.h"

#include <bus/BusWriter.h>
#include <core/base/configuration.h>
#include <core/records/enumerations.h>

#include <algorithm>
#include <iterator>
#include <limits>

namespace {
constexpr int defaultTimeoutMs = 5000;
constexpr int maxTimeoutMs = 24 * 60 * 60 * 1000;

/// More than anyone reads, but little of a device's memory.
constexpr int defaultOpenNotifications = 1000;
constexpr int defaultTotalOpenNotifications = 10'000;
constexpr int defaultSounds = 256;
constexpr int defaultTotalSounds = 1000;
/// Far more than people cause, but far less than a device can handle.
constexpr int defaultRequestsPerSecond = 2000;
constexpr int defaultSubscriptions = 1000;
constexpr int defaultInboxes = 100;
constexpr int maxOfAny = 1'000'000;

/// A MiB of text or bytes, and some room for the other values.
constexpr int defaultValueBytes = (1 << 20) + (1 << 16);
constexpr int minValueBytes = 1024;
/// Half of what one message can hold.
constexpr int maxValueBytes = 1 << 26;

/// Half of what the system bus keeps of one sender's unread messages.
constexpr int defaultTotalUnreadBytes = 1 << 26;
constexpr int defaultUnreadBytes = defaultTotalUnreadBytes / 4;
/// While a bus under load reads one message from the host, all others wait: at 4 KiB in a turn of some
/// milliseconds, this takes a third of a second. A message with a picture fits.
constexpr int defaultMessageBytes = 3 << 17;
constexpr int minMessageBytes = 1 << 16;

constexpr int defaultTotalStoredBytes = 1 << 26;
constexpr int defaultStoredBytes = defaultTotalStoredBytes / 4;
constexpr int defaultTotalRequestBytes = 1 << 26;
constexpr int minTotalBytes = 1 << 20;
constexpr int maxTotalBytes = 1 << 30;

/// Whether sd-bus knows how to connect to one of the addresses.
bool isAddress(const QString &text)
{
    constexpr const char *transports[] = {"unix:", "tcp:", "unixexec:", "x-machine-unix:"};
    const QStringList addresses = text.split(QLatin1Char(';'));
    return std::any_of(addresses.begin(), addresses.end(), [&](const QString &address) {
        return std::any_of(std::begin(transports), std::end(transports),
                           [&](const char *transport) {
                               return address.startsWith(QLatin1String(transport)) &&
                                      address.contains(QLatin1Char('='));
                           });
    });
}

QString readBus(TavoConfiguration &reader)
{
    const QString key = QStringLiteral("bus");
    const QString session = QStringLiteral("session");
    QString bus = reader.string(key, session);
    if (bus != session && bus != QLatin1String("system") && !isAddress(bus)) {
        reader.fail(key,
                    QStringLiteral("\"%1\" must be \"session\", \"system\" or an address, such as "
                                   "\"unix:path=/run/dbus/system_bus_socket\"")
                        .arg(bus));
    }
    return bus;
}

ClientLimits readLimits(TavoConfiguration reader)
{
    ClientLimits limits;
    limits.openNotifications =
        reader.integer(QStringLiteral("openNotifications"), defaultOpenNotifications, 1, maxOfAny);
    limits.totalOpenNotifications = reader.integer(QStringLiteral("totalOpenNotifications"),
                                                   defaultTotalOpenNotifications, 1, maxOfAny);
    limits.sounds = reader.integer(QStringLiteral("sounds"), defaultSounds, 1, maxOfAny);
    limits.totalSounds =
        reader.integer(QStringLiteral("totalSounds"), defaultTotalSounds, 1, maxOfAny);
    limits.requestsPerSecond =
        reader.integer(QStringLiteral("requestsPerSecond"), defaultRequestsPerSecond, 0, maxOfAny);
    limits.valueBytes = reader.integer(QStringLiteral("valueBytes"), defaultValueBytes,
                                       minValueBytes, maxValueBytes);
    limits.messageBytes = reader.integer(QStringLiteral("messageBytes"), defaultMessageBytes,
                                         minMessageBytes, BusWriter::maxMessageBytes);
    limits.subscriptions =
        reader.integer(QStringLiteral("subscriptions"), defaultSubscriptions, 0, maxOfAny);
    limits.inboxes = reader.integer(QStringLiteral("inboxes"), defaultInboxes, 0, maxOfAny);
    limits.storedBytes = reader.integer(QStringLiteral("storedBytes"), defaultStoredBytes,
                                        minTotalBytes, maxTotalBytes);
    limits.totalStoredBytes = reader.integer(QStringLiteral("totalStoredBytes"),
                                             defaultTotalStoredBytes, minTotalBytes, maxTotalBytes);
    limits.totalRequestBytes =
        reader.integer(QStringLiteral("totalRequestBytes"), defaultTotalRequestBytes, minTotalBytes,
                       maxTotalBytes);
    limits.unreadBytes = reader.integer(QStringLiteral("unreadBytes"), defaultUnreadBytes,
                                        minTotalBytes, maxTotalBytes);
    limits.totalUnreadBytes = reader.integer(QStringLiteral("totalUnreadBytes"),
                                             defaultTotalUnreadBytes, minTotalBytes, maxTotalBytes);
    limits.priority =
        reader.integer(QStringLiteral("priority"), TavoNotificationItemPriority::Urgent,
                       TavoNotificationItemPriority::Low, std::numeric_limits<int>::max());
    reader.finish();
    return limits;
}

DbusConfiguration::Sounds readSounds(TavoConfiguration reader)
{
    DbusConfiguration::Sounds sounds;
    // Schemes are not case-sensitive.
    for (const QString &scheme :
         reader.stringList(QStringLiteral("schemes"), {QStringLiteral("file")})) {
        sounds.schemes.append(scheme.toLower());
    }
    sounds.folders = reader.stringList(QStringLiteral("folders"), {QStringLiteral("/")});
    for (const QString &folder : qAsConst(sounds.folders)) {
        if (!folder.startsWith(QLatin1Char('/'))) {
            reader.fail(QStringLiteral("folders"),
                        QStringLiteral("\"%1\" must be an absolute path").arg(folder));
        }
    }
    for (const QString &host : reader.stringList(QStringLiteral("hosts"), {})) {
        const QUrl url(QStringLiteral("http://") + host, QUrl::StrictMode);
        if (url.host().isEmpty() || url.authority() != host.toLower() ||
            !url.userInfo().isEmpty()) {
            reader.fail(QStringLiteral("hosts"),
                        QStringLiteral("\"%1\" must be a host, with or without a port").arg(host));
        }
        sounds.hosts.append(url);
    }
    sounds.theme = reader.string(QStringLiteral("theme"), QStringLiteral("freedesktop"));
    reader.finish();
    return sounds;
}
} // namespace

DbusConfiguration DbusConfiguration::fromHash(const QVariantHash &config)
{
    TavoConfiguration reader(config);
    DbusConfiguration configuration;
    configuration.bus = readBus(reader);
    configuration.notifications = reader.boolean(QStringLiteral("notifications"), true);
    configuration.defaultTimeoutMs =
        reader.integer(QStringLiteral("defaultTimeout"), ::defaultTimeoutMs, 0, maxTimeoutMs);
    configuration.criticalTimeoutMs =
        reader.integer(QStringLiteral("criticalTimeout"), 0, 0, maxTimeoutMs);
    configuration.limits = readLimits(reader.section(QStringLiteral("limits")));
    configuration.sounds = readSounds(reader.section(QStringLiteral("sounds")));
    reader.finish();
    return configuration;
}
