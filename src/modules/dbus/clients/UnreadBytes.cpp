// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "UnreadBytes.h"

#include "Refusals.h"
#include <bus/BusConnection.h>
#include <core/tavo.h>

#include <algorithm>
#include <utility>

namespace {
/// How often to ask about a client with too much unread, so that it is served again soon after it has
/// resumed reading.
constexpr int askAgainMs = 1000;

/// Parts of a client's limit: at which the bus is asked, after how much more it is asked again, and
/// what counts as nothing.
constexpr std::size_t askPart = 2;
constexpr std::size_t askAgainPart = 8;
constexpr std::size_t negligiblePart = 256;

/// Beyond the limit of all clients, this part of it is reserved for those that read.
constexpr std::size_t reservedPart = 4;
} // namespace

UnreadBytes::UnreadBytes(BusConnection &bus, const ClientLimits &limits)
    : m_bus(bus)
    , m_maxBytes(std::size_t(limits.unreadBytes))
    , m_maxTotal(std::size_t(limits.totalUnreadBytes))
    , m_maxWithReserve(m_maxTotal + m_maxTotal / reservedPart)
    , m_negligibleBytes(m_maxBytes / negligiblePart)
    , m_probe(bus)
{
    m_timer.setInterval(askAgainMs);
    tavoConnect(&m_timer, &QTimer::timeout, this, &UnreadBytes::on_timer_timeout);
    tavoConnect(&m_probe, &UnreadProbe::answered, this, &UnreadBytes::on_probe_answered);
    tavoConnect(&m_probe, &UnreadProbe::statisticsMissing, this,
                &UnreadBytes::on_probe_statisticsMissing);
}

void UnreadBytes::start()
{
    m_probe.reset();
}

void UnreadBytes::stop()
{
    m_clients.clear();
    m_total = 0;
    m_timer.stop();
}

void UnreadBytes::forget(const std::string &client)
{
    const auto entry = m_clients.find(client);
    if (entry != m_clients.end()) {
        m_total -= entry->second.total();
        m_clients.erase(entry);
    }
}

void UnreadBytes::addReply(const std::string &client, std::size_t bytes)
{
    if (m_probe.hasStatistics()) {
        count(*m_clients.try_emplace(client).first, bytes);
    }
}

void UnreadBytes::count(ClientMap::value_type &entry, std::size_t bytes)
{
    Client &client = entry.second;
    const bool isDue =
        client.total() > m_maxBytes / askPart && client.since > m_maxBytes / askAgainPart;
    const bool isShort = m_total > m_maxTotal / askPart && client.since > m_negligibleBytes;
    if (isDue || isShort) {
        // The new bytes are added afterwards, because they have not been sent yet.
        ask(entry);
    }
    client.since += bytes;
    m_total += bytes;
}

bool UnreadBytes::fits(const Client &client, std::size_t bytes) const
{
    const std::size_t then = client.total() + bytes;
    if (then <= m_negligibleBytes) {
        return m_total + bytes <= m_maxWithReserve;
    }
    // No client may take more than it leaves for the others. So something is always left, however many
    // clients do not read.
    return (client.total() <= m_negligibleBytes || then <= m_maxBytes) &&
           m_total + bytes + then <= m_maxTotal;
}

bool UnreadBytes::isTooMuch(std::size_t bytes) const
{
    return bytes > m_negligibleBytes && (bytes > m_maxBytes || m_total + bytes > m_maxTotal);
}

bool UnreadBytes::isIgnored(const Client &client) const
{
    return client.calls > m_maxBytes ||
           (client.known > m_negligibleBytes && m_total > m_maxWithReserve);
}

bool UnreadBytes::admitCall(const std::string &client, std::size_t bytes)
{
    auto &entry = *m_clients.try_emplace(client).first;
    if (isIgnored(entry.second)) {
        ask(entry);
        return false;
    }
    if (m_probe.hasStatistics()) {
        entry.second.calls += bytes;
        count(entry, bytes);
    }
    return true;
}

bool UnreadBytes::admitReply(const std::string &client, std::size_t bytes)
{
    if (!m_probe.hasStatistics()) {
        return true;
    }
    auto &entry = *m_clients.try_emplace(client).first;
    const bool isAdmitted = entry.second.undecided.empty() && fits(entry.second, bytes);
    if (isAdmitted) {
        count(entry, bytes);
    }
    return isAdmitted;
}

bool UnreadBytes::admitSignal(const std::string &client, std::size_t bytes)
{
    auto &entry = *m_clients.try_emplace(client).first;
    Client &known = entry.second;
    const bool isOverdue = known.signals > 0 && known.signals + bytes > m_maxBytes;
    const bool isFull = known.total() > m_negligibleBytes && m_total + bytes > m_maxWithReserve;
    if (isOverdue || isFull) {
        ask(entry);
        return false;
    }
    known.signals += bytes;
    count(entry, bytes);
    return true;
}

void UnreadBytes::decideLater(const std::string &client, std::size_t bytes, Decide decide)
{
    auto &entry = *m_clients.try_emplace(client).first;
    Client &known = entry.second;
    // Only for the first one, so that a client can't postpone the decision with more calls.
    known.asksAgain = known.asksAgain || (known.isAsked && known.undecided.empty());
    known.undecided.push_back({bytes, std::move(decide)});
    if (m_total + bytes + known.total() + bytes > m_maxTotal) {
        // Others may have read meanwhile. Asks about them first, so that the reply about this client
        // comes last.
        for (auto &other : m_clients) {
            if (&other != &entry && other.second.total() > 0) {
                ask(other);
            }
        }
    }
    ask(entry);
    if (!known.isAsked && m_bus.isConnected()) {
        // The bus could not be asked, so no reply will come.
        this->decide(std::string(client));
    }
}

void UnreadBytes::decide(const std::string &client)
{
    // A decision may add undecided replies; these wait for the next reply of the bus.
    auto undecided = std::exchange(m_clients.find(client)->second.undecided, {});
    for (Undecided &reply : undecided) {
        const auto entry = m_clients.find(client);
        if (entry == m_clients.end()) {
            return;
        }
        if (!m_probe.hasStatistics() || fits(entry->second, reply.bytes)) {
            addReply(client, reply.bytes);
            reply.decide(Verdict::Send);
        } else {
            reply.decide(isIgnored(entry->second) ? Verdict::Ignore : Verdict::Refuse);
        }
    }
}

BusError UnreadBytes::refusal(const std::string &client) const
{
    const auto entry = m_clients.find(client);
    const bool isItsOwn = entry != m_clients.end() && 2 * entry->second.total() > m_maxBytes;
    return isItsOwn ? Refusals::clientReadsTooLittle(m_maxBytes)
                    : Refusals::allClientsReadTooLittle(m_maxTotal);
}

void UnreadBytes::ask(ClientMap::value_type &entry)
{
    Client &client = entry.second;
    if (!client.isAsked && m_probe.ask(entry.first)) {
        client.isAsked = true;
        client.before += std::exchange(client.since, 0);
    }
}

void UnreadBytes::on_probe_answered(const std::string &client,
                                    const std::optional<std::size_t> &unreadBytes)
{
    const auto entry = m_clients.find(client);
    if (entry == m_clients.end()) {
        return;
    }
    Client &known = entry->second;
    known.isAsked = false;
    if (unreadBytes) {
        confirm(known, *unreadBytes);
    }
    if (std::exchange(known.asksAgain, false) && unreadBytes) {
        ask(*entry);
    }
    if (!known.isAsked) {
        decide(client);
    }
}

void UnreadBytes::confirm(Client &client, std::size_t unreadBytes)
{
    // The bus counts the messages of all senders.
    const std::size_t own = std::min(client.before, unreadBytes);
    m_total -= client.before - own;
    client.before = own;
    client.known = own;
    if (!isTooMuch(own)) {
        client.signals = 0;
        client.calls = 0;
    } else if (!m_timer.isActive()) {
        m_timer.start();
    }
}

void UnreadBytes::on_probe_statisticsMissing()
{
    // From now on only signals are counted: only for them is the client asked whether it reads.
    m_total = 0;
    for (auto &entry : m_clients) {
        Client &client = entry.second;
        client.before = client.since = client.known = client.signals = client.calls = 0;
    }
}

void UnreadBytes::on_timer_timeout()
{
    bool isNeeded = false;
    for (auto &entry : m_clients) {
        if (isTooMuch(entry.second.known)) {
            isNeeded = true;
            ask(entry);
        }
    }
    if (!isNeeded) {
        m_timer.stop();
    }
}
