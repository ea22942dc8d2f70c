// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QTimer>

#include <chrono>

class Host;

/// Reports to the service manager, if one has started this process and asks for it: that all modules run, that the
/// host reloads its configuration or stops, and, again and again, that neither the host nor a module hangs. When a module hangs, logs its name and
/// asks to be restarted.
///
/// Thread: the main thread.
class ServiceManager
{
public:
    ServiceManager();

    /// How often the thread of a module has to show that it does not hang; 0 if nobody watches.
    std::chrono::milliseconds heartbeat() const { return m_watchInterval / 8; }

    /// @p host must live for as long as this object.
    void reportReady(Host &host);
    void reportReloading();
    /// The service manager shows the status, which is printable.
    void reportReloaded(const QString &status);
    void reportStopping();

private:
    void check(Host &host);

    /// Without a report for so long, the service manager ends the process; 0 if it does not watch.
    std::chrono::milliseconds m_watchInterval{0};
    QTimer m_checkTimer;
};
