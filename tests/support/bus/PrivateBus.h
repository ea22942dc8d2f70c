// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

/// A private message bus. Everyone may do everything, unless the additional elements of its
/// configuration say otherwise. Ends with the object, and also if the process ends.
class PrivateBus
{
public:
    /// Returns when the bus accepts connections; throws when it does not start.
    explicit PrivateBus(const QString &settings = {});
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    /// The settings of the system bus that limit the unread bytes of one sender and for one
    /// receiver.
    static QString systemLimits();

    /// Stays the same when the bus is restarted.
    QString address() const;
    QString socket() const { return m_folder.filePath(QStringLiteral("bus")); }
    QString folder() const { return m_folder.path(); }

    void stop();

    /// Starts a bus that has been stopped.
    void start();

    /// Suspends the daemon until resume(): the system still queues connections and messages for
    /// it, but it does not respond.
    void pause();
    void resume();

    void restart()
    {
        stop();
        start();
    }

private:
    QString configuration() const { return m_folder.filePath(QStringLiteral("bus.conf")); }

    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_daemon;
};
