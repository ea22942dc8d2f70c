// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// A message bus of a test's own, which lets everybody do everything, unless further settings, elements
/// of its configuration, say otherwise. Ends with the object, and with
/// the process at the latest.
class PrivateBus
{
public:
    /// Returns when the bus takes connections; throws when it doesn't come to that.
    explicit PrivateBus(const QString &settings = {});
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    /// The same from start to start.
    QString address() const;
    QString folder() const { return m_folder.path(); }

    void stop();

    /// Starts the bus again once it was stopped.
    void start();

    /// Stops the daemon's process where it is: the bus takes connections and messages, as far as the
    /// system keeps them for it, and says nothing, until resume().
    void pause();
    void resume();

    void restart()
    {
        stop();
        start();
    }

private:
    QString socket() const { return m_folder.filePath(QStringLiteral("bus")); }
    QString configuration() const { return m_folder.filePath(QStringLiteral("bus.conf")); }

    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_daemon;
};
