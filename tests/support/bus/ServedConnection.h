// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>

#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <sdbus-c++/sdbus-c++.h>

/// A connection of sdbus-c++'s that the test's event loop serves: another than the one under test.
/// Connecting, and what sdbus-c++ waits for the bus with, blocks.
class ServedConnection
{
public:
    /// Calls back when the bus has gone, while the connection is still there.
    ServedConnection(const QString &address, std::function<void()> onLost);

    sdbus::IConnection &connection() { return *m_connection; }

private:
    void serve();
    void watch();

    const std::function<void()> m_onLost;
    QObject m_context; ///< of what is called while this is there
    std::unique_ptr<sdbus::IConnection> m_connection;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
};
