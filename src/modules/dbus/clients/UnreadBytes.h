// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ClientLimits.h"
#include "Outbox.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

class BusConnection;
class BusError;
class BusMessage;
class Quotas;

/// Counts the bytes that were sent to each client and that it has not read. A bus may count unread
/// messages against their sender, and stop reading from a sender that has used up its share. Then one
/// client that never reads would silence the host for all.
///
/// Bytes that were sent count as unread until the bus reports how many of them really are. The bus
/// is asked before a client is refused anything. On a bus that does not report this, nothing is
/// counted.
///
/// Owned by Clients, used in the worker's thread. Clients must be known to the quotas.
class UnreadBytes : public QObject
{
    Q_OBJECT

public:
    /// About how much a message takes in addition to its values.
    static constexpr std::size_t messageBytes = 256;

    /// The limits may change.
    UnreadBytes(BusConnection &bus, Quotas &quotas, Outbox &outbox, const ClientLimits &limits);

    /// There is a new bus.
    void start() { m_isTold = true; }
    /// The bus has gone, with everything that was sent. All clients have been forgotten.
    void stop() { m_clients.clear(); }
    /// The client leaves. The quotas still know it.
    void forget(const std::string &client);

    /// Whether a reply or a signal may be sent now; if so, counts it. It
    /// may exceed the client's limit if the client has read everything else.
    bool admit(const std::string &client, std::size_t bytes);

    /// Makes and sends an error, which takes few bytes, and counts it: now, or when the client has read more. A
    /// client that reads nothing gets only a few; further ones are dropped. Throws what making it throws.
    void sendError(const std::string &client, std::size_t bytes, const Outbox::Instead &make);

    using Decide = std::function<void(bool isAdmitted)>;

    /// Decides about a reply that was not admitted, as soon as the bus has told how much is unread.
    /// Replies to one client are decided in their order; until then, no further reply is admitted.
    void decideLater(const std::string &client, std::size_t bytes, Decide decide);

    /// Whether a reply to the client is still to be decided.
    bool isUndecided(const std::string &client) const;

    /// The error for a reply that is refused.
    BusError refusal(const std::string &client) const;

private Q_SLOTS:
    void on_lateTimer_timeout();

private:
    using Clock = std::chrono::steady_clock;

    struct Undecided
    {
        std::size_t bytes;
        Decide decide;
    };

    struct Late
    {
        std::size_t bytes;
        BusMessage error;
    };

    struct Client
    {
        std::size_t before = 0; ///< sent before the bus was last asked, and not known to be read
        std::size_t since = 0;  ///< sent since the bus was last asked
        bool isAsked = false;   ///< the bus has been asked and has not replied
        bool asksAgain = false; ///< ask once more after the reply, because more was sent
        Clock::time_point asked{};
        std::deque<Undecided> undecided;
        std::deque<Late> late;

        std::size_t total() const { return before + since; }
    };
    using ClientMap = std::map<std::string, Client>;

    std::size_t maxBytes() const { return std::size_t(m_limits.unreadBytes); } ///< of one client
    std::size_t maxTotal() const
    {
        return std::size_t(m_limits.totalUnreadBytes);
    } ///< of all clients
    bool fits(const ClientMap::value_type &entry, std::size_t bytes) const;
    bool fitsError(const ClientMap::value_type &entry, std::size_t bytes) const;
    void count(ClientMap::value_type &entry, std::size_t bytes);
    void sendLate(ClientMap::value_type &entry);
    void ask(ClientMap::value_type &entry);
    void askSometimes(ClientMap::value_type &entry);
    void askAboutOthers(const std::string &client);
    void take(const std::string &client, const BusMessage &statistics);
    void confirm(ClientMap::value_type &entry, std::size_t unreadBytes);
    void decide(const std::string &client);
    void doWithoutStatistics(const std::string &reason);

    BusConnection &m_bus;
    Quotas &m_quotas;
    Outbox &m_outbox;
    const ClientLimits &m_limits;
    ClientMap m_clients;
    std::size_t m_undecidedBytes = 0;
    bool m_isTold = true; ///< false once the bus has turned out to have no statistics
    std::string m_lastOther;
    Clock::time_point m_othersAsked{};
    std::string m_lastLate;
    QTimer m_lateTimer; ///< runs while errors are late
};
