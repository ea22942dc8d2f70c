// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "UnreadBytes.h"

#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <bus/BusWriter.h>
#include <core/tavo.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

constexpr const char *busName = "org.freedesktop.DBus";
constexpr const char *busPath = "/org/freedesktop/DBus";

/// Who has stopped reading is asked for so often, so that it is served again soon after it goes on.
constexpr int askAgainMs = 1000;

constexpr std::chrono::seconds timeout(25);

/// In parts of a client's limit: from where on the bus is asked, how much more until it is asked
/// again, and what counts as nothing.
constexpr std::size_t askPart = 2;
constexpr std::size_t askAgainPart = 8;
constexpr std::size_t littlePart = 256;

/// Beyond the limit of all, this part of it is kept for those who read.
constexpr std::size_t reservedPart = 4;

/// Whether an error means that the bus never tells.
bool isNotTold(const std::string &error)
{
    static const std::string prefix = "org.freedesktop.DBus.Error.";
    return error == prefix + "UnknownMethod" || error == prefix + "UnknownInterface" ||
           error == prefix + "UnknownObject" || error == prefix + "NotSupported" ||
           error == prefix + "AccessDenied";
}

/// Of the statistics that the bus has of a connection, what it has not sent to it yet.
std::size_t readOutgoingBytes(const BusMessage &reply)
{
    BusReader reader(reply);
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

UnreadBytes::UnreadBytes(BusConnection &bus, const DbusConfiguration::Limits &limits)
    : m_bus(bus)
    , m_most(std::size_t(limits.unreadBytes))
    , m_mostOfAll(std::size_t(limits.totalUnreadBytes))
    , m_mostWithReserve(m_mostOfAll + m_mostOfAll / reservedPart)
    , m_little(m_most / littlePart)
{
    m_timer.setInterval(askAgainMs);
    tavoConnect(&m_timer, &QTimer::timeout, this, &UnreadBytes::on_timer_timeout);
}

void UnreadBytes::start()
{
    m_isToldByBus = true;
}

void UnreadBytes::stop()
{
    m_clients.clear();
    m_all = 0;
    m_timer.stop();
}

void UnreadBytes::forget(const std::string &client)
{
    const auto entry = m_clients.find(client);
    if (entry != m_clients.end()) {
        m_all -= entry->second.all();
        m_clients.erase(entry);
    }
}

void UnreadBytes::add(const std::string &client, std::size_t bytes)
{
    if (m_isToldByBus) {
        count(*m_clients.try_emplace(client).first, bytes);
    }
}

void UnreadBytes::count(ClientMap::value_type &entry, std::size_t bytes)
{
    Client &known = entry.second;
    const bool isDue = known.all() > m_most / askPart && known.since > m_most / askAgainPart;
    const bool isShort = m_all > m_mostOfAll / askPart && known.since > m_little;
    if (isDue || isShort) {
        // Of what has been sent before: this is still to be sent.
        ask(entry);
    }
    known.since += bytes;
    m_all += bytes;
}

bool UnreadBytes::fits(const Client &client, std::size_t bytes) const
{
    const std::size_t then = client.all() + bytes;
    if (then <= m_little) {
        return m_all + bytes <= m_mostWithReserve;
    }
    // Nobody may take more of what there is for all than is left for the others: so, however many
    // don't read, something is left.
    return (client.all() <= m_little || then <= m_most) && m_all + bytes + then <= m_mostOfAll;
}

bool UnreadBytes::isTooMuch(std::size_t bytes) const
{
    return bytes > m_little && (bytes > m_most || m_all + bytes > m_mostOfAll);
}

bool UnreadBytes::take(const std::string &client, std::size_t bytes)
{
    if (!m_isToldByBus) {
        return true;
    }
    auto &entry = *m_clients.try_emplace(client).first;
    const bool isFree = entry.second.held.empty() && fits(entry.second, bytes);
    if (isFree) {
        count(entry, bytes);
    }
    return isFree;
}

void UnreadBytes::hold(const std::string &client, std::size_t bytes, Decide decide)
{
    auto &entry = *m_clients.try_emplace(client).first;
    Client &known = entry.second;
    // The first alone, so that a client that goes on asking puts nothing off.
    known.isToAskAgain = known.isToAskAgain || (known.isAsked && known.held.empty());
    known.held.push_back({bytes, std::move(decide)});
    if (m_all + bytes + entry.second.all() + bytes > m_mostOfAll) {
        // Others may have read meanwhile. They come first, so that the client's answer is the last.
        for (auto &other : m_clients) {
            if (&other != &entry && other.second.all() > 0) {
                ask(other);
            }
        }
    }
    ask(entry);
    if (!known.isAsked && m_bus.isConnected()) {
        // Nobody would ever decide.
        settle(std::string(client));
    }
}

std::string UnreadBytes::refusal(const std::string &client) const
{
    const auto entry = m_clients.find(client);
    const bool isItsOwn = entry != m_clients.end() && 2 * entry->second.all() > m_most;
    return isItsOwn ? "A client may leave no more than " + std::to_string(m_most) +
                          " bytes of answers and signals unread"
                    : "Clients have left too much unread, of which all together may leave " +
                          std::to_string(m_mostOfAll) + " bytes";
}

bool UnreadBytes::takeSignal(const std::string &client, std::size_t bytes)
{
    auto &entry = *m_clients.try_emplace(client).first;
    Client &known = entry.second;
    const bool isOverdue = known.signals > 0 && known.signals + bytes > m_most;
    const bool isFull = known.all() > m_little && m_all + bytes > m_mostWithReserve;
    if (isOverdue || isFull) {
        ask(entry);
        return false;
    }
    known.signals += bytes;
    count(entry, bytes);
    return true;
}

bool UnreadBytes::takeCall(const std::string &client, std::size_t bytes)
{
    auto &entry = *m_clients.try_emplace(client).first;
    if (isIgnored(entry.second)) {
        ask(entry);
        return false;
    }
    if (m_isToldByBus) {
        entry.second.calls += bytes;
        count(entry, bytes);
    }
    return true;
}

bool UnreadBytes::isIgnored(const Client &client) const
{
    return client.calls > m_most || (client.known > m_little && m_all > m_mostWithReserve);
}

void UnreadBytes::ask(ClientMap::value_type &entry)
{
    Client &client = entry.second;
    if (client.isAsked || !m_bus.isConnected()) {
        return;
    }
    try {
        if (m_isToldByBus) {
            askBus(entry.first);
        } else {
            askClient(entry.first);
        }
        client.isAsked = true;
        client.before += std::exchange(client.since, 0);
    } catch (const BusError &error) {
        // Then the bus has gone, and all that was sent with it.
        LOG4CPLUS_DEBUG(logger, "What is unread can't be asked for: " << error.what());
    }
}

void UnreadBytes::askBus(const std::string &client)
{
    // The bus handles it after everything that was sent before, whatever the client does.
    const BusMessage question = m_bus.createCall(
        busName, busPath, "org.freedesktop.DBus.Debug.Stats", "GetConnectionStats");
    BusWriter(question).writeString(QString::fromStdString(client));
    m_bus.send(question, timeout,
               [this, client](const BusMessage &reply) { on_bus_answered(client, reply); });
}

void UnreadBytes::askClient(const std::string &client)
{
    m_bus.send(m_bus.createCall(client.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping"), timeout,
               [this, client](const BusMessage &reply) { on_client_answered(client, reply); });
}

void UnreadBytes::on_bus_answered(const std::string &client, const BusMessage &reply)
{
    const auto entry = m_clients.find(client);
    if (entry == m_clients.end()) {
        return;
    }
    entry->second.isAsked = false;
    const auto error = reply.error();
    try {
        if (!reply.isFromBus()) {
            // A reply of another sender counts for nothing.
        } else if (!error) {
            confirm(entry->second, readOutgoingBytes(reply));
        } else if (isNotTold(error->name())) {
            doWithoutBus(error->message());
        }
    } catch (const std::exception &unexpected) {
        doWithoutBus(unexpected.what());
    }
    if (std::exchange(entry->second.isToAskAgain, false) && !error) {
        ask(*entry);
    }
    if (!entry->second.isAsked) {
        settle(client);
    }
}

void UnreadBytes::doWithoutBus(const std::string &reason)
{
    if (!std::exchange(m_isToldByBus, false)) {
        return;
    }
    LOG4CPLUS_INFO(logger, "The bus doesn't tell what clients haven't read, so that no answers are "
                           "refused for that: "
                               << reason);
    // From now on signals alone count, since only they can be seen to be read.
    m_all = 0;
    for (auto &entry : m_clients) {
        Client &client = entry.second;
        client.before = client.since = client.known = client.signals = client.calls = 0;
    }
}

void UnreadBytes::on_client_answered(const std::string &client, const BusMessage &reply)
{
    const auto entry = m_clients.find(client);
    if (entry == m_clients.end()) {
        return;
    }
    entry->second.isAsked = false;
    // Others answer in its name that it may not be asked, or that it took too long.
    if (reply.sender() == client) {
        confirm(entry->second, 0);
    }
}

void UnreadBytes::confirm(Client &client, std::size_t waiting)
{
    // What waits may be others' messages.
    const std::size_t unread = std::min(client.before, waiting);
    m_all -= client.before - unread;
    client.before = unread;
    client.known = unread;
    if (!isTooMuch(unread)) {
        client.signals = 0;
        client.calls = 0;
    } else if (!m_timer.isActive()) {
        m_timer.start();
    }
}

void UnreadBytes::settle(const std::string &client)
{
    // What is decided may have more held, which waits for its own answer then.
    auto held = std::exchange(m_clients.find(client)->second.held, {});
    for (Held &item : held) {
        const auto entry = m_clients.find(client);
        if (entry == m_clients.end()) {
            return;
        }
        if (!m_isToldByBus || fits(entry->second, item.bytes)) {
            add(client, item.bytes);
            item.decide(Verdict::Send);
        } else {
            item.decide(isIgnored(entry->second) ? Verdict::Ignore : Verdict::Refuse);
        }
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
