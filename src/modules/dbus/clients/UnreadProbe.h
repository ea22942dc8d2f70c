// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>

#include <cstddef>
#include <optional>
#include <string>

class BusConnection;
class BusMessage;

/// Asks how many of the bytes that were sent to a client it has not read yet.
///
/// Asks the bus for its statistics. If the bus has none, it is not asked again, and clients are pinged
/// instead: a client that replies has read everything that was sent before.
///
/// Owned by UnreadBytes, used in its thread.
class UnreadProbe : public QObject
{
    Q_OBJECT

public:
    explicit UnreadProbe(BusConnection &bus);

    /// Whether the bus tells what is unread. True until it is known that it does not.
    bool hasStatistics() const { return m_hasStatistics; }

    /// There is a new bus, which may have statistics.
    void reset() { m_hasStatistics = true; }

    /// False when there is no bus to ask. Otherwise answered() follows.
    bool ask(const std::string &client);

Q_SIGNALS:
    /// Without a value if neither the bus nor the client has told.
    void answered(const std::string &client, const std::optional<std::size_t> &unreadBytes);

    /// The bus has turned out to have no statistics.
    void statisticsMissing();

private:
    void askBus(const std::string &client);
    void askClient(const std::string &client);
    void doWithoutStatistics(const std::string &reason);

    BusConnection &m_bus;
    bool m_hasStatistics = true;
};
