// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/WatchedFile.h"

#include <QFile>
#include <QFileInfo>

WatchedFile::WatchedFile(const QString &file, QObject *parent)
    : QObject(parent)
    , m_name(QFileInfo(file).absoluteFilePath())
{
    constexpr int delayMs = 50;
    m_delay.setSingleShot(true);
    m_delay.setInterval(delayMs);
    // Before it is read, so that no change is missed.
    watch();
    m_content = read();
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &WatchedFile::on_watcher_changed);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this,
            &WatchedFile::on_watcher_changed);
    connect(&m_delay, &QTimer::timeout, this, &WatchedFile::on_delay_timeout);
}

/// The folder too: many programs replace a file instead of writing to it.
void WatchedFile::watch()
{
    QString folder = nearestFolder();
    for (QString watched; watched != folder; folder = nearestFolder()) {
        watched = folder;
        m_watcher.addPath(folder);
    }
    const QStringList folders = m_watcher.directories();
    for (const QString &other : folders) {
        if (other != folder) {
            m_watcher.removePath(other);
        }
    }
    if (QFile::exists(m_name)) {
        m_watcher.addPath(m_name);
    }
}

/// The file's folder, or the one in which it or a folder above it will be made.
QString WatchedFile::nearestFolder() const
{
    QString folder = QFileInfo(m_name).path();
    while (!QFileInfo::exists(folder) && folder != QLatin1String("/")) {
        folder = QFileInfo(folder).path();
    }
    return folder;
}

QByteArray WatchedFile::read() const
{
    QFile file(m_name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void WatchedFile::on_watcher_changed()
{
    watch();
    m_delay.start();
}

void WatchedFile::on_delay_timeout()
{
    const QByteArray content = read();
    if (content.isEmpty()) {
        if (!m_isMissing && !m_content.isEmpty()) {
            m_isMissing = true;
            Q_EMIT vanished();
        }
        return;
    }
    if (content != m_content || m_isMissing) {
        m_isMissing = false;
        m_content = content;
        Q_EMIT changed();
    }
}
