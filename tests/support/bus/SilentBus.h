// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QLocalServer>
#include <QString>
#include <QTemporaryDir>

#include <systemd/sd-bus.h>

#include <memory>
#include <vector>

/// Accepts connections like a bus, then stops responding. Served by the test's event loop.
class SilentBus
{
public:
    enum class After {
        Connecting,     ///< sends nothing at all
        Authenticating, ///< authenticates the client, but does not reply to its Hello
        Greeting        ///< replies to Hello and to nothing else
    };

    explicit SilentBus(After after);
    ~SilentBus();

    QString address() const;
    QString path() const; ///< of its socket

    /// How many connections it has accepted.
    int connections() const { return m_connections; }

    /// How many authenticated clients have sent Hello.
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
