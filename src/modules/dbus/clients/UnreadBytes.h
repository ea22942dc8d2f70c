// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/DbusConfiguration.h"

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <unordered_map>

class BusConnection;
class BusMessage;

/// How much of what each client was sent it hasn't read. A bus may count that as the sender's, and
/// read nothing more from a sender that has used up its share: one client that never reads would
/// silence the host for all.
///
/// What is sent is counted, and the bus is asked how much of it waits: often enough for the count to
/// stay near the truth, and always before a client is refused anything. Of a bus that doesn't tell,
/// such as one that counts it as the reader's, answers are never refused; signals are when the client
/// itself doesn't answer.
///
/// Thread and owner: its worker's.
class UnreadBytes : public QObject
{
    Q_OBJECT

public:
    /// About what a message takes beside the values in it.
    static constexpr std::size_t messageBytes = 256;

    UnreadBytes(BusConnection &bus, const DbusConfiguration::Limits &limits);

    /// The bus is there, or has gone with all that was sent over it.
    void start();
    void stop();

    /// The client has left.
    void forget(const std::string &client);

    /// Whether a call may be answered at all, be it with a refusal; then about so many bytes are
    /// counted for that.
    bool takeCall(const std::string &client, std::size_t bytes);

    /// Counts an answer that is sent in any case.
    void add(const std::string &client, std::size_t bytes);

    /// Whether an answer may be sent now; then it is counted. What a client is sent when nothing
    /// waits may be larger than its limit.
    bool take(const std::string &client, std::size_t bytes);

    enum class Verdict {
        Send,   ///< and it is counted
        Refuse, ///< too much waits
        Ignore  ///< so much that a refusal is too much
    };
    using Decide = std::function<void(Verdict verdict)>;

    /// Where take() says no: asks the bus, and decides when it has answered. What is decided of one
    /// client is decided in the order of these calls; take() says no while there are any.
    void hold(const std::string &client, std::size_t bytes, Decide decide);

    /// Why take() says no, for people.
    std::string refusal(const std::string &client) const;

    /// Whether a signal may be sent; then it is counted.
    bool takeSignal(const std::string &client, std::size_t bytes);

private Q_SLOTS:
    void on_timer_timeout();

private:
    struct Held
    {
        std::size_t bytes;
        Decide decide;
    };

    struct Client
    {
        std::size_t before = 0; ///< sent before the last question, and not known to be read
        std::size_t since = 0;  ///< sent after it
        std::size_t known = 0;  ///< what waited when the last question was answered
        /// Signals, and small answers to calls, since it was last known not to have too much unread:
        /// as much again as its limit of either is sent until the bus has told.
        std::size_t signals = 0;
        std::size_t calls = 0;
        bool isAsked = false;      ///< a question is under way
        bool isToAskAgain = false; ///< of what was sent after it, before anything is decided
        std::deque<Held> held;

        std::size_t all() const { return before + since; }
    };
    using ClientMap = std::unordered_map<std::string, Client>;

    bool fits(const Client &client, std::size_t bytes) const;
    bool isTooMuch(std::size_t bytes) const;
    bool isIgnored(const Client &client) const;
    void count(ClientMap::value_type &entry, std::size_t bytes);

    void ask(ClientMap::value_type &entry);
    void askBus(const std::string &client);
    void askClient(const std::string &client);
    void on_bus_answered(const std::string &client, const BusMessage &reply);
    void on_client_answered(const std::string &client, const BusMessage &reply);
    void doWithoutBus(const std::string &reason);
    void confirm(Client &client, std::size_t waiting);
    void settle(const std::string &client);

    BusConnection &m_bus;
    const std::size_t m_most;
    const std::size_t m_mostOfAll;
    const std::size_t m_mostWithReserve; ///< the reserve is for who has little unread
    const std::size_t m_little;          ///< as good as nothing
    ClientMap m_clients;
    std::size_t m_all = 0; ///< of all clients
    bool m_isToldByBus = true;
    QTimer m_timer; ///< while somebody has too much unread
};
