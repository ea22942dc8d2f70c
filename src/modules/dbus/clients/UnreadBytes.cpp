// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "UnreadBytes.h"

#include "Outbox.h"
#include "Quotas.h"
#include "Refusals.h"
#include <bus/BusConnection.h>
#include <bus/BusReader.h>
#include <bus/BusWriter.h>
#include <core/tavo.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

constexpr const char *busName = "org.freedesktop.DBus";
constexpr const char *busPath = "/org/freedesktop/DBus";
constexpr std::chrono::seconds askTimeout(25);

/// Limits the questions to the bus, even if many messages are refused.
constexpr std::chrono::milliseconds minAskInterval(100);

/// How many other clients the bus is asked about at once. A bus limits how many calls may wait for
/// replies.
constexpr int maxOthersAsked = 32;

/// Errors to a client that wait until it has read more.
constexpr std::size_t maxLate = 32;

/// Fractions of a client's limit, as divisors: how much is unread when the bus is asked, how much
/// more is sent before it is asked again, and how much more may be sent as errors.
constexpr std::size_t askPart = 2;
constexpr std::size_t askAgainPart = 8;
constexpr std::size_t smallPart = 16;

/// Fractions of the bytes that each client may always leave unread, for when all clients together
/// have left much unread: how much more is sent before the bus is asked again, and how much more as
/// errors.
constexpr std::size_t freeAskAgainPart = 4;
constexpr std::size_t freeSmallPart = 2;

/// Returns whether the error means that the bus gives us no statistics.
bool meansNoStatistics(const std::string &error)
{
    static const std::string prefix = "org.freedesktop.DBus.Error.";
    return error == prefix + "UnknownMethod" || error == prefix + "UnknownInterface" ||
           error == prefix + "UnknownObject" || error == prefix + "NotSupported" ||
           error == prefix + "AccessDenied";
}

std::size_t readOutgoingBytes(const BusMessage &statistics)
{
    BusReader reader(statistics);
    reader.enterArray("{sv}");
    while (!reader.isAtEnd()) {
        reader.enterDictEntry("sv");
        if (reader.readString() == QLatin1String("OutgoingBytes")) {
            return std::size_t(reader.readIntegerVariant().value());
        }
        reader.skip();
        reader.leave();
    }
    throw std::runtime_error("no OutgoingBytes");
}
} // namespace

UnreadBytes::UnreadBytes(BusConnection &bus, Quotas &quotas, Outbox &outbox,
                         const ClientLimits &limits)
    : m_bus(bus)
    , m_quotas(quotas)
    , m_outbox(outbox)
    , m_limits(limits)
{
    m_lateTimer.setSingleShot(true);
    m_lateTimer.setInterval(minAskInterval);
    tavoConnect(&m_lateTimer, &QTimer::timeout, this, &UnreadBytes::on_lateTimer_timeout);
}

void UnreadBytes::forget(const std::string &client)
{
    const auto entry = m_clients.find(client);
    if (entry == m_clients.end()) {
        return;
    }
    m_quotas.subtract(client, Quotas::UnreadBytes, entry->second.total());
    for (const Undecided &reply : entry->second.undecided) {
        m_undecidedBytes -= reply.bytes;
    }
    m_clients.erase(entry);
}

bool UnreadBytes::fits(const ClientMap::value_type &entry, std::size_t bytes) const
{
    const std::size_t unread = entry.second.total();
    return (unread <= Quotas::freeBytes || unread + bytes <= maxBytes()) &&
           m_quotas.hasRoom(entry.first, Quotas::UnreadBytes, bytes);
}

bool UnreadBytes::admit(const std::string &client, std::size_t bytes)
{
    if (!m_isTold || !m_quotas.knows(client)) {
        return true;
    }
    auto &entry = *m_clients.try_emplace(client).first;
    if (!entry.second.undecided.empty() || !fits(entry, bytes)) {
        askSometimes(entry);
        return false;
    }
    count(entry, bytes);
    return true;
}

bool UnreadBytes::fitsError(const ClientMap::value_type &entry, std::size_t bytes) const
{
    const std::size_t then = entry.second.total() + bytes;
    return then <= Quotas::freeBytes + Quotas::freeBytes / freeSmallPart ||
           (then <= maxBytes() + maxBytes() / smallPart &&
            m_quotas.hasRoom(entry.first, Quotas::UnreadBytes, bytes));
}

void UnreadBytes::sendError(const std::string &client, std::size_t bytes,
                            const Outbox::Instead &make)
{
    if (!m_isTold || !m_quotas.knows(client)) {
        m_outbox.send(client, make(), messageBytes);
        return;
    }
    auto &entry = *m_clients.try_emplace(client).first;
    std::deque<Late> &late = entry.second.late;
    if (late.empty() && fitsError(entry, bytes)) {
        m_outbox.send(client, make(), messageBytes);
        count(entry, bytes);
        return;
    }
    askSometimes(entry);
    if (late.size() < maxLate) {
        late.push_back({bytes, make()});
        if (!m_lateTimer.isActive()) {
            m_lateTimer.start();
        }
    }
}

void UnreadBytes::sendLate(ClientMap::value_type &entry)
{
    std::deque<Late> &late = entry.second.late;
    while (!late.empty() && (!m_isTold || fitsError(entry, late.front().bytes))) {
        const Late &next = late.front();
        m_outbox.send(entry.first, next.error, messageBytes);
        if (m_isTold) {
            count(entry, next.bytes);
        }
        late.pop_front();
    }
}

void UnreadBytes::on_lateTimer_timeout()
{
    int asked = 0;
    auto client = m_clients.upper_bound(m_lastLate);
    for (std::size_t i = 0; i < m_clients.size(); ++i, ++client) {
        client = client == m_clients.end() ? m_clients.begin() : client;
        sendLate(*client);
        if (!client->second.late.empty() && asked < maxOthersAsked) {
            ++asked;
            m_lastLate = client->first;
            ask(*client);
        }
    }
    if (asked > 0) {
        m_lateTimer.start();
    }
}

void UnreadBytes::count(ClientMap::value_type &entry, std::size_t bytes)
{
    Client &client = entry.second;
    const bool isDue =
        client.total() > maxBytes() / askPart && client.since > maxBytes() / askAgainPart;
    const bool isShort = client.since > Quotas::freeBytes / freeAskAgainPart &&
                         !m_quotas.hasRoom(entry.first, Quotas::UnreadBytes, maxBytes());
    if (isDue || isShort) {
        // The new bytes are added afterwards, because they have not been sent yet.
        ask(entry);
    }
    client.since += bytes;
    m_quotas.add(entry.first, Quotas::UnreadBytes, bytes);
}

void UnreadBytes::decideLater(const std::string &client, std::size_t bytes, Decide decide)
{
    auto &entry = *m_clients.try_emplace(client).first;
    Client &known = entry.second;
    // Only for the first one, so that a client can't postpone the decision with more calls.
    known.asksAgain = known.asksAgain || (known.isAsked && known.undecided.empty());
    known.undecided.push_back({bytes, std::move(decide)});
    m_undecidedBytes += bytes;
    if (!m_quotas.hasRoom(client, Quotas::UnreadBytes, bytes)) {
        askAboutOthers(client);
    }
    ask(entry);
    // If the bus can't be asked, no reply will come. Replies that wait take memory.
    if (!known.isAsked || m_undecidedBytes > maxTotal()) {
        this->decide(std::string(client));
    }
}

void UnreadBytes::askAboutOthers(const std::string &client)
{
    const Clock::time_point now = Clock::now();
    if (now - m_othersAsked < minAskInterval) {
        return;
    }
    m_othersAsked = now;
    auto other = m_clients.upper_bound(m_lastOther);
    for (int i = 0, asked = 0; i < int(m_clients.size()) && asked < maxOthersAsked; ++i) {
        other = other == m_clients.end() ? m_clients.begin() : other;
        if (other->first != client && other->second.total() > Quotas::freeBytes) {
            m_lastOther = other->first;
            ++asked;
            ask(*other);
        }
        ++other;
    }
}

void UnreadBytes::decide(const std::string &client)
{
    // A decision may add undecided replies; these wait for the next reply of the bus.
    auto undecided = std::exchange(m_clients.find(client)->second.undecided, {});
    for (const Undecided &reply : undecided) {
        m_undecidedBytes -= reply.bytes;
    }
    for (const Undecided &reply : undecided) {
        const auto entry = m_clients.find(client);
        if (entry == m_clients.end()) {
            return;
        }
        const bool isAdmitted = !m_isTold || fits(*entry, reply.bytes);
        if (isAdmitted && m_isTold) {
            count(*entry, reply.bytes);
        }
        reply.decide(isAdmitted);
    }
}

bool UnreadBytes::isUndecided(const std::string &client) const
{
    const auto entry = m_clients.find(client);
    return entry != m_clients.end() && !entry->second.undecided.empty();
}

BusError UnreadBytes::refusal(const std::string &client) const
{
    const auto entry = m_clients.find(client);
    const bool isItsOwn = entry != m_clients.end() && 2 * entry->second.total() > maxBytes();
    return isItsOwn ? Refusals::clientReadsTooLittle(maxBytes())
                    : Refusals::allClientsReadTooLittle(maxTotal());
}

void UnreadBytes::ask(ClientMap::value_type &entry)
{
    Client &known = entry.second;
    if (known.isAsked || !m_isTold || !m_bus.isConnected()) {
        return;
    }
    try {
        // The bus handles this call after everything that was sent before, even if the client does not
        // read.
        const std::string client = entry.first;
        const BusMessage question = m_bus.createCall(
            busName, busPath, "org.freedesktop.DBus.Debug.Stats", "GetConnectionStats");
        BusWriter(question).writeString(QString::fromStdString(client));
        m_outbox.call(client, question, askTimeout,
                      [this, client](const BusMessage &reply) { take(client, reply); });
        known.isAsked = true;
        known.asked = Clock::now();
        known.before += std::exchange(known.since, 0);
    } catch (const BusError &error) {
        // The bus has gone, and with it everything that was sent.
        LOG4CPLUS_DEBUG(logger, "Failed to ask the bus for unread bytes: " << error.what());
    }
}

void UnreadBytes::askSometimes(ClientMap::value_type &entry)
{
    if (Clock::now() - entry.second.asked >= minAskInterval) {
        ask(entry);
    }
}

void UnreadBytes::take(const std::string &client, const BusMessage &statistics)
{
    const auto entry = m_clients.find(client);
    if (entry == m_clients.end()) {
        return;
    }
    Client &known = entry->second;
    known.isAsked = false;
    try {
        const auto error = statistics.error();
        if (!error && statistics.isFromBus()) {
            confirm(*entry, readOutgoingBytes(statistics));
        } else if (error && meansNoStatistics(error->name())) {
            doWithoutStatistics(error->message());
        }
    } catch (const std::exception &unexpected) {
        doWithoutStatistics(unexpected.what());
    }
    sendLate(*entry);
    if (std::exchange(known.asksAgain, false)) {
        ask(*entry);
    }
    if (!known.isAsked) {
        decide(client);
    }
}

void UnreadBytes::confirm(ClientMap::value_type &entry, std::size_t unreadBytes)
{
    // The bus counts the messages of all senders.
    const std::size_t own = std::min(entry.second.before, unreadBytes);
    m_quotas.subtract(entry.first, Quotas::UnreadBytes, entry.second.before - own);
    entry.second.before = own;
}

void UnreadBytes::doWithoutStatistics(const std::string &reason)
{
    if (!std::exchange(m_isTold, false)) {
        return;
    }
    LOG4CPLUS_INFO(logger, "The bus doesn't tell what clients haven't read, so no reply is "
                           "refused for that: "
                               << reason);
    for (auto &[client, known] : m_clients) {
        m_quotas.subtract(client, Quotas::UnreadBytes, known.total());
        known.before = known.since = 0;
    }
}
