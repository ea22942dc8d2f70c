// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

/// A small file that people edit while programs run. Used in the thread that made it.
class WatchedFile : public QObject
{
    Q_OBJECT

public:
    explicit WatchedFile(const QString &file, QObject *parent = nullptr);

    const QString &name() const { return m_name; }

    /// As it was when it was last read; empty if it can't be read.
    const QByteArray &content() const { return m_content; }

Q_SIGNALS:
    /// The content is another one, and not empty: a file that is missing or empty for a moment is being
    /// written.
    void changed();

private Q_SLOTS:
    void on_watcher_changed();
    void on_delay_timeout();

private:
    void watch();
    QByteArray read() const;

    const QString m_name;
    QByteArray m_content;
    QFileSystemWatcher m_watcher;
    QTimer m_delay; ///< until a file that is written in steps is complete
};
