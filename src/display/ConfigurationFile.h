// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/WatchedFile.h"
#include "display/DisplayConfiguration.h"

#include <QObject>

/// The configuration in a file, which is read again when the file changes. While the file is wrong or
/// missing, the last good configuration stays.
class ConfigurationFile : public QObject
{
    Q_OBJECT

public:
    /// Reads the file. Without a name, the configuration is the default until there is a
    /// $XDG_CONFIG_HOME/tavo/display.json. Throws a std::runtime_error if the file is wrong.
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
    void on_file_changed();

private:
    WatchedFile m_file;
    DisplayConfiguration m_configuration;
};
