// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/ConfigurationFile.h"

#include <core/base/connect.h>

#include <QStandardPaths>

#include <stdexcept>

ConfigurationFile::ConfigurationFile(const QString &file, QObject *parent)
    : QObject(parent)
{
    if (file.isEmpty()) {
        return;
    }
    m_file = std::make_unique<WatchedFile>(file);
    m_configuration = DisplayConfiguration::fromFile(m_file->name());
    tavoConnect(m_file.get(), &WatchedFile::changed, this, &ConfigurationFile::on_file_changed);
}

QString ConfigurationFile::find()
{
    return QStandardPaths::locate(QStandardPaths::GenericConfigLocation,
                                  QStringLiteral("tavo/display.json"));
}

void ConfigurationFile::on_file_changed()
{
    try {
        m_configuration = DisplayConfiguration::fromJson(m_file->content(), m_file->name());
    } catch (const std::runtime_error &error) {
        Q_EMIT failed(QString::fromStdString(error.what()));
        return;
    }
    Q_EMIT changed();
}
