// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/ConfigurationFile.h"

#include <core/base/connect.h>

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <stdexcept>

namespace {
QByteArray contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

ConfigurationFile::ConfigurationFile(const QString &file, QObject *parent)
    : QObject(parent)
    , m_file(file.isEmpty() ? QString() : QFileInfo(file).absoluteFilePath())
{
    if (m_file.isEmpty()) {
        return;
    }
    constexpr int delayMs = 50;
    m_delay.setSingleShot(true);
    m_delay.setInterval(delayMs);
    watch();
    m_content = contentOf(m_file);
    m_configuration = DisplayConfiguration::fromFile(m_file);
    tavoConnect(&m_watcher, &QFileSystemWatcher::fileChanged, this,
                &ConfigurationFile::on_watcher_changed);
    tavoConnect(&m_watcher, &QFileSystemWatcher::directoryChanged, this,
                &ConfigurationFile::on_watcher_changed);
    tavoConnect(&m_delay, &QTimer::timeout, this, &ConfigurationFile::on_delay_timeout);
}

QString ConfigurationFile::find()
{
    return QStandardPaths::locate(QStandardPaths::GenericConfigLocation,
                                  QStringLiteral("tavo/display.json"));
}

/// The folder too: many programs replace a file instead of writing to it.
void ConfigurationFile::watch()
{
    m_watcher.addPath(QFileInfo(m_file).path());
    if (QFile::exists(m_file)) {
        m_watcher.addPath(m_file);
    }
}

void ConfigurationFile::on_watcher_changed()
{
    watch();
    m_delay.start();
}

void ConfigurationFile::on_delay_timeout()
{
    const QByteArray content = contentOf(m_file);
    if (content.isEmpty() || content == m_content) {
        return;
    }
    m_content = content;
    try {
        m_configuration = DisplayConfiguration::fromJson(content, m_file);
    } catch (const std::runtime_error &error) {
        Q_EMIT failed(QString::fromStdString(error.what()));
        return;
    }
    Q_EMIT changed();
}
