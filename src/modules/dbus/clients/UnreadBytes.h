// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ClientLimits.h"
#include "UnreadProbe.h"

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

class BusConnection;
class BusError;

/// Counts the bytes that were sent to each client and that it has not read. A bus may count unread
/// messages against their sender, and stop reading from a sender that has used up its share. Then one
/// client that never reads would silence the host for all.
///
/// Asks the bus how much is still unread: often enough to keep the count nearly right, and always before
/// a client is refused anything. A bus that counts unread messages against their receiver may not tell.
/// There, replies are never refused, and signals only if the client does not reply to a ping.
///
/// Owned by Clients, used in the worker's thread.
class UnreadBytes : public QObject
{
    Q_OBJECT

public:
    /// About what a message takes besides the values in it.
    static constexpr std::size_t messageBytes = 256;

    UnreadBytes(BusConnection &bus, const ClientLimits &limits);

    /// There is a new bus.
    void start();
    /// The bus has gone, with everything that was sent.
    void stop();
    /// The client has left.
    void forget(const std::string &client);

    /// Whether a call may be replied to, if only with an error. Counts the bytes for that reply.
    bool admitCall(const std::string &client, std::size_t bytes);

    /// Whether a reply may be sent now; if so, counts it. When a client has read everything, one reply may
    /// be larger than its limit.
    bool admitReply(const std::string &client, std::size_t bytes);

    /// Counts a reply that can't be refused.
    void addReply(const std::string &client, std::size_t bytes);

    /// Whether a signal may be sent; if so, counts it.
    bool admitSignal(const std::string &client, std::size_t bytes);

    enum class Verdict {
        Send,   ///< the reply is counted
        Refuse, ///< too much is unread
        Ignore  ///< so much is unread that not even an error may be sent
    };
    using Decide = std::function<void(Verdict verdict)>;

    /// Decides about a reply that was not admitted, as soon as the bus has told how much is unread.
    /// Replies to one client are decided in their order; until then, no further reply is admitted.
    void decideLater(const std::string &client, std::size_t bytes, Decide decide);

    /// The error for a reply that is refused.
    BusError refusal(const std::string &client) const;

private Q_SLOTS:
    void on_probe_answered(const std::string &client,
                           const std::optional<std::size_t> &unreadBytes);
    void on_probe_statisticsMissing();
    void on_timer_timeout();

private:
    struct Undecided
    {
        std::size_t bytes;
        Decide decide;
    };

    struct Client
    {
        std::size_t before = 0; ///< sent before the bus was last asked, and not known to be read
        std::size_t since = 0;  ///< sent since the bus was last asked
        std::size_t known = 0;  ///< unread, as the bus last told
        /// Bytes of signals, and of small replies to calls, since the client was last known to read.
        /// Each may reach the client's limit before the bus has replied.
        std::size_t signals = 0;
        std::size_t calls = 0;
        bool isAsked = false; ///< the bus has been asked and has not replied
        bool asksAgain =
            false; ///< ask again before deciding: more was sent since the bus was asked
        std::deque<Undecided> undecided;

        std::size_t total() const { return before + since; }
    };
    using ClientMap = std::unordered_map<std::string, Client>;

    bool fits(const Client &client, std::size_t bytes) const;
    bool isTooMuch(std::size_t bytes) const;
    bool isIgnored(const Client &client) const;
    void count(ClientMap::value_type &entry, std::size_t bytes);
    void ask(ClientMap::value_type &entry);
    void confirm(Client &client, std::size_t unreadBytes);
    void decide(const std::string &client);

    BusConnection &m_bus;
    const std::size_t m_maxBytes;        ///< of one client
    const std::size_t m_maxTotal;        ///< of all clients
    const std::size_t m_maxWithReserve;  ///< the reserve is for clients with little unread
    const std::size_t m_negligibleBytes; ///< of one client
    ClientMap m_clients;
    std::size_t m_total = 0; ///< of all clients
    UnreadProbe m_probe;
    QTimer m_timer; ///< runs while a client has too much unread
};
