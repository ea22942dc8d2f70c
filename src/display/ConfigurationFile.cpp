// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/ConfigurationFile.h"

#include <core/base/connect.h>

#include <QStandardPaths>

#include <stdexcept>

namespace {
const QString place = QStringLiteral("tavo/display.json");

/// Where a person makes a file of their own.
QString ownFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QLatin1Char('/') + place;
}
} // namespace

ConfigurationFile::ConfigurationFile(const QString &file, QObject *parent)
    : QObject(parent)
    , m_file(file.isEmpty() ? ownFile() : file)
{
    if (!file.isEmpty()) {
        m_configuration = DisplayConfiguration::fromFile(file);
    }
    tavoConnect(&m_file, &WatchedFile::changed, this, &ConfigurationFile::on_file_changed);
}

QString ConfigurationFile::find()
{
    return QStandardPaths::locate(QStandardPaths::GenericConfigLocation, place);
}

void ConfigurationFile::on_file_changed()
{
    try {
        m_configuration = DisplayConfiguration::fromJson(m_file.content(), m_file.name());
    } catch (const std::runtime_error &error) {
        Q_EMIT failed(QString::fromStdString(error.what()));
        return;
    }
    Q_EMIT changed();
}
