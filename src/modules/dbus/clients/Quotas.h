// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ClientLimits.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// Counts what each client holds, by kind, against the limits of one client and of all together.
///
/// Owned by Clients. Clients are known by their unique names, each from its first request until it
/// leaves. What outlives its client still counts in the total.
class Quotas
{
    struct Account;

public:
    enum Kind { Subscriptions, Inboxes, Sounds, OpenNotifications, RequestBytes };

    /// Something that a client holds. It counts until it is destroyed, and must not outlive the quotas.
    class Charge
    {
    public:
        Charge() = default;
        Charge(Charge &&other) noexcept = default;
        Charge &operator=(Charge &&other) noexcept;
        ~Charge();

        /// Empty once the client has left.
        const std::string &client() const;

    private:
        friend class Quotas;
        Charge(std::shared_ptr<Account> account, Kind kind, std::size_t amount);

        std::shared_ptr<Account> m_account; ///< null once it is moved from
        Kind m_kind = Subscriptions;
        std::size_t m_amount = 0;
    };

    explicit Quotas(const ClientLimits &limits);

    /// Counts a request. Throws BusError::limitExceeded() for a client that sends too many in too
    /// short a time.
    void countRequest(const std::string &client);

    /// Counts something that the client will hold. Throws BusError::limitExceeded() when that would
    /// exceed a limit.
    Charge charge(const std::string &client, Kind kind, std::size_t amount = 1);

    bool knows(const std::string &client) const { return m_accounts.count(client) > 0; }
    std::size_t held(const std::string &client, Kind kind) const;
    std::vector<std::string> clients() const;

    /// The client has left the bus. Its name may belong to another client from now on.
    void forget(const std::string &client);

private:
    static constexpr std::size_t kinds = RequestBytes + 1;
    using Clock = std::chrono::steady_clock;
    using Amounts = std::array<std::size_t, kinds>;

    struct Limit
    {
        std::size_t perClient;
        std::size_t total;
        const char *what;
    };

    struct Account
    {
        std::string client; ///< empty once it has left
        Amounts &totals;    ///< of all clients
        double requests;    ///< how many it may send at once; refilled with time
        Clock::time_point refilled;
        Amounts held{};
    };

    const std::shared_ptr<Account> &account(const std::string &client);

    const int m_requestsPerSecond; ///< 0: no limit
    const std::array<Limit, kinds> m_limits;
    Amounts m_totals{};
    std::unordered_map<std::string, std::shared_ptr<Account>> m_accounts;
};
