// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>

#include <cstddef>
#include <optional>
#include <string>

class BusConnection;
class BusMessage;

/// Asks how much of what a client was sent it has not read yet.
///
/// Asks the bus for its statistics. A bus that has none is not asked again; its clients are pinged
/// instead, since a client that replies has read all that was sent before.
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
    /// Has no value when neither the bus nor the client told it.
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
