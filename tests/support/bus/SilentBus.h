// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <vector>

#include <QLocalServer>
#include <QString>
#include <QTemporaryDir>

#include <systemd/sd-bus.h>

/// Takes connections as a bus does, and falls silent. Served by the test's event loop.
class SilentBus
{
public:
    enum class After {
        Connecting,     ///< says nothing at all
        Authenticating, ///< lets the client in, and leaves its Hello unanswered
        Greeting        ///< answers Hello, and nothing else
    };

    explicit SilentBus(After after);
    ~SilentBus();

    QString address() const;
    QString path() const; ///< of its socket

    /// Connections so far.
    int connections() const { return m_connections; }

    /// Clients so far that it has let in, and that have said Hello then.
    int greetings() const { return m_greetings; }

private:
    class Server;
    class Connection;

    void take(qintptr descriptor);
    static int handle(sd_bus_message *message, void *bus, sd_bus_error *error);

    const After m_after;
    int m_connections = 0;
    int m_greetings = 0;
    QTemporaryDir m_folder;
    std::unique_ptr<Server> m_server;
    std::vector<std::unique_ptr<Connection>> m_open;
};
