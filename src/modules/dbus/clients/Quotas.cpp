// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Quotas.h"

#include "Refusals.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {
constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

/// A client that starts with many requests does not have to wait.
constexpr double burstSeconds = 2;
} // namespace

Quotas::Charge::Charge(std::shared_ptr<Account> account, Kind kind, std::size_t amount)
    : m_account(std::move(account))
    , m_kind(kind)
    , m_amount(amount)
{
    m_account->held[kind] += amount;
    m_account->totals[kind] += amount;
}

Quotas::Charge &Quotas::Charge::operator=(Charge &&other) noexcept
{
    std::swap(m_account, other.m_account);
    std::swap(m_kind, other.m_kind);
    std::swap(m_amount, other.m_amount);
    return *this;
}

Quotas::Charge::~Charge()
{
    if (m_account) {
        m_account->held[m_kind] -= m_amount;
        m_account->totals[m_kind] -= m_amount;
    }
}

const std::string &Quotas::Charge::client() const
{
    static const std::string nobody;
    return m_account ? m_account->client : nobody;
}

Quotas::Quotas(const ClientLimits &limits)
    : m_requestsPerSecond(limits.requestsPerSecond)
    , m_limits{{{std::size_t(limits.subscriptions), unlimited, "subscriptions"},
                {std::size_t(limits.inboxes), unlimited, "inboxes"},
                {std::size_t(limits.sounds), std::size_t(limits.totalSounds), "sounds"},
                {std::size_t(limits.openNotifications), std::size_t(limits.totalOpenNotifications),
                 "notifications open"},
                {unlimited, std::size_t(limits.totalRequestBytes),
                 "bytes of requests that wait for their replies"}}}
{
}

const std::shared_ptr<Quotas::Account> &Quotas::account(const std::string &client)
{
    std::shared_ptr<Account> &account = m_accounts[client];
    if (!account) {
        account = std::make_shared<Account>(
            Account{client, m_totals, burstSeconds * m_requestsPerSecond, Clock::now()});
    }
    return account;
}

void Quotas::countRequest(const std::string &client)
{
    Account &known = *account(client);
    if (m_requestsPerSecond == 0) {
        return;
    }
    const Clock::time_point now = Clock::now();
    const std::chrono::duration<double> elapsed = now - std::exchange(known.refilled, now);
    known.requests = std::min(burstSeconds * m_requestsPerSecond,
                              known.requests + elapsed.count() * m_requestsPerSecond);
    if (known.requests < 1) {
        throw Refusals::tooManyRequests(m_requestsPerSecond);
    }
    known.requests -= 1;
}

Quotas::Charge Quotas::charge(const std::string &client, Kind kind, std::size_t amount)
{
    const std::shared_ptr<Account> &known = account(client);
    const Limit &limit = m_limits[kind];
    const std::size_t own = known->held[kind] + amount;
    const std::size_t all = m_totals[kind] + amount;
    if (own > limit.perClient) {
        throw Refusals::clientHoldsTooMuch(limit.perClient, limit.what);
    }
    // Without a limit for each client, a client may take no more than it leaves for the others.
    if (all + (limit.perClient == unlimited ? own : 0) > limit.total) {
        throw Refusals::allClientsHoldTooMuch(limit.total, limit.what);
    }
    return {known, kind, amount};
}

std::size_t Quotas::held(const std::string &client, Kind kind) const
{
    const auto known = m_accounts.find(client);
    return known == m_accounts.end() ? 0 : known->second->held[kind];
}

std::vector<std::string> Quotas::clients() const
{
    std::vector<std::string> names;
    for (const auto &[name, account] : m_accounts) {
        names.push_back(name);
    }
    return names;
}

void Quotas::forget(const std::string &client)
{
    const auto known = m_accounts.find(client);
    if (known != m_accounts.end()) {
        known->second->client.clear();
        m_accounts.erase(known);
    }
}
