// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/fleet/FleetBroker.h"

#include <core/base/configuration.h>

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <stdexcept>

namespace {
QString configurationFile(const Options &options)
{
    if (!options.configuration.empty()) {
        return QFile::decodeName(QByteArray::fromStdString(options.configuration));
    }
    const QString own = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                        QStringLiteral("/tavo/fleet.json");
    const QString common = QStringLiteral("/etc/tavo/fleet.json");
    for (const QString &file : {own, common}) {
        if (QFileInfo::exists(file)) {
            return file;
        }
    }
    return {};
}

QVariantHash brokerSection(const QString &file)
{
    // Other keys are those of the device, whose file this may be.
    return file.isEmpty() ? QVariantHash{}
                          : TavoConfiguration::fromFile(file).object(QStringLiteral("broker"));
}

void replace(QVariantHash &section, const char *key, const std::string &value)
{
    if (!value.empty()) {
        section.insert(QLatin1String(key), QString::fromStdString(value));
    }
}
} // namespace

Result<MqttSettings, ExitFailure> fleetBroker(const Options &options)
{
    try {
        QVariantHash section = brokerSection(configurationFile(options));
        replace(section, "url", options.broker);
        replace(section, "ca", options.ca);
        replace(section, "certificate", options.certificate);
        replace(section, "key", options.key);
        replace(section, "user", options.user);
        replace(section, "passwordFile", options.passwordFile);
        if (section.isEmpty()) {
            return ExitFailure{ExitCode::Usage,
                               QStringLiteral("no broker was given: use --broker, TAVO_BROKER or a "
                                              "configuration file")};
        }
        return MqttSettings::read(TavoConfiguration(section));
    } catch (const std::runtime_error &error) {
        return ExitFailure{ExitCode::Usage, QString::fromUtf8(error.what())};
    }
}
