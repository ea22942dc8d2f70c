// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

/// A small file that people edit while programs run. It and its folder may be made later. Used in the
/// thread that made it.
class WatchedFile : public QObject
{
    Q_OBJECT

public:
    explicit WatchedFile(const QString &file, QObject *parent = nullptr);

    const QString &name() const { return m_name; }

    /// As it last was when it was not empty; empty if it never was.
    const QByteArray &content() const { return m_content; }

Q_SIGNALS:
    /// The content is another one, or is there again.
    void changed();

    /// The file is missing, empty or can't be read any more. Not emitted for a moment in which it is being
    /// written.
    void vanished();

private Q_SLOTS:
    void on_watcher_changed();
    void on_delay_timeout();

private:
    void watch();
    QString nearestFolder() const;
    QByteArray read() const;

    const QString m_name;
    QByteArray m_content;
    bool m_isMissing = false; ///< after it was there
    QFileSystemWatcher m_watcher;
    QTimer m_delay; ///< until a file that is written in steps is complete
};
