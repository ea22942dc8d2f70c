// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/DisplayConfiguration.h"

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

/// The configuration in a file, which is read again when the file changes. While the file is wrong or
/// missing, the last good configuration stays.
class ConfigurationFile : public QObject
{
    Q_OBJECT

public:
    /// Reads the file. Without a name, the configuration is the default and never changes. Throws a
    /// std::runtime_error if the file is wrong.
    explicit ConfigurationFile(const QString &file, QObject *parent = nullptr);

    const DisplayConfiguration &configuration() const { return m_configuration; }

    /// $XDG_CONFIG_HOME/tavo/display.json, or tavo/display.json in one of $XDG_CONFIG_DIRS. Empty if
    /// there is none.
    static QString find();

Q_SIGNALS:
    void changed();
    /// The file has changed and is wrong.
    void failed(const QString &reason);

private Q_SLOTS:
    void on_watcher_changed();
    void on_delay_timeout();

private:
    void watch();

    const QString m_file;
    QByteArray m_content;
    DisplayConfiguration m_configuration;
    QFileSystemWatcher m_watcher;
    QTimer m_delay; ///< until a file that is written in steps is complete
};
