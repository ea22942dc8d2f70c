// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/FleetConfiguration.h"

#include "fleet/protocol/FleetTopics.h"
#include <core/base/configuration.h>

#include <QFileInfo>
#include <QStandardPaths>
#include <QSysInfo>

namespace {
constexpr int defaultTimeoutMs = 10000;
constexpr int maxTimeoutMs = 86400000;
constexpr int maxGroups = 64;
constexpr int weekSeconds = 604800;

QString defaultStore()
{
    const QString folder = qEnvironmentVariable("STATE_DIRECTORY").section(QLatin1Char(':'), 0, 0);
    return folder.isEmpty()
               ? QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                     QStringLiteral("/tavo/fleet.db")
               : folder + QStringLiteral("/fleet.db");
}

void readNames(TavoConfiguration &source, FleetConfiguration &read)
{
    read.device = source.string(QStringLiteral("device"),
                                QSysInfo::machineHostName().section(QLatin1Char('.'), 0, 0));
    if (!isDeviceName(read.device)) {
        source.fail(
            QStringLiteral("device"),
            QStringLiteral("must be 1 to 64 letters, digits, dots, underscores and hyphens, "
                           "and not \"group\""));
    }
    read.groups = source.stringList(QStringLiteral("groups"), {QStringLiteral("all")});
    read.groups.removeDuplicates();
    if (read.groups.size() > maxGroups ||
        !std::all_of(read.groups.begin(), read.groups.end(), isFleetName)) {
        source.fail(QStringLiteral("groups"),
                    QStringLiteral("must be at most %1 names of 1 to 64 letters, digits, dots, "
                                   "underscores and hyphens")
                        .arg(maxGroups));
    }
}

void readDiscovery(TavoConfiguration section, FleetConfiguration &read)
{
    const auto key = QStringLiteral("prefix");
    read.discoveryPrefix = section.string(key, {});
    for (const QChar wrong : {QLatin1Char('+'), QLatin1Char('#'), QLatin1Char('$')}) {
        if (read.discoveryPrefix.contains(wrong) ||
            read.discoveryPrefix.startsWith(QLatin1Char('/')) ||
            read.discoveryPrefix.endsWith(QLatin1Char('/'))) {
            section.fail(
                key, QStringLiteral("must be the beginning of a topic, such as \"homeassistant\""));
        }
    }
    read.title = section.string(QStringLiteral("title"), read.device);
    const QVariantHash buttons = section.object(QStringLiteral("buttons"));
    for (auto button = buttons.begin(); button != buttons.end(); ++button) {
        const QString sound = button.value().toString();
        if (!isFleetName(button.key()) || sound.isEmpty()) {
            section.fail(
                QStringLiteral("buttons"),
                QStringLiteral("must have the names of sounds, such as {\"chime\": \"bell\"}"));
        }
        read.buttons.insert(button.key(), sound);
    }
    section.finish();
}

/// Where the service manager finds a credential that only the service gets: fleet_NAME is NAME in the folder beside
/// the configuration.
QString sourceOf(const QString &name, const QString &configuration)
{
    const auto prefix = QLatin1String("fleet_");
    const QFileInfo file(configuration);
    return name.startsWith(prefix)
               ? QStringLiteral("%1/%2/%3")
                     .arg(file.absolutePath(), file.completeBaseName(), name.mid(prefix.size()))
               : name;
}
} // namespace

QStringList FleetConfiguration::missing(const QString &file) const
{
    QStringList lines;
    const std::initializer_list<std::pair<const char *, QString>> files{
        {"ca", broker.caFile},
        {"certificate", broker.certificateFile},
        {"key", broker.keyFile},
        {"passwordFile", broker.passwordFile}};
    for (const auto &[key, name] : files) {
        const QString source = sourceOf(name, file);
        if (!name.isEmpty() && !QFileInfo(source).isFile()) {
            lines.append(QStringLiteral("%1: broker.%2: there is no file %3")
                             .arg(file, QLatin1String(key), source));
        }
    }
    if (permissions.allows(FleetCall::Kind::Sound) &&
        !QFileInfo(permissions.soundFolder()).isDir()) {
        lines.append(QStringLiteral("%1: allow.sounds.folder: there is no folder %2")
                         .arg(file, permissions.soundFolder()));
    }
    return lines;
}

FleetConfiguration FleetConfiguration::fromFile(const QString &file)
{
    TavoConfiguration source = TavoConfiguration::fromFile(file);
    FleetConfiguration read;
    readNames(source, read);
    read.bus = source.string(QStringLiteral("bus"), {});
    read.store = source.string(QStringLiteral("store"), defaultStore());
    read.broker = MqttSettings::read(source.section(QStringLiteral("broker")));
    read.broker.clientId = QStringLiteral("tavo-") + read.device;
    read.broker.sessionSeconds = weekSeconds;
    read.permissions = Permissions::read(source.section(QStringLiteral("allow")));
    read.timeoutMs = source.integer(QStringLiteral("timeout"), defaultTimeoutMs, 0, maxTimeoutMs);
    readDiscovery(source.section(QStringLiteral("discovery")), read);
    source.finish();
    return read;
}
