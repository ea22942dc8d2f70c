// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Outbox.h"

#include "Quotas.h"
#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <core/tavo.h>

#include <algorithm>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// What sending costs a client, for the turns.
constexpr std::chrono::duration<double, std::nano> timePerByte(100);

/// The bus reads so many small messages within a tenth of a second, even under load.
constexpr std::size_t maxInAMoment = 256;

/// So much may wait for one client, unless the first of it has waited for longer, or is large and has waited
/// for a moment: the bus may need almost half a second for each large one.
constexpr std::size_t maxLate = 32;
constexpr std::chrono::milliseconds lateAfter(50);
constexpr std::chrono::milliseconds moment(10);
constexpr std::size_t largeBytes = 1 << 12;

/// How long a large message waits for a busy bus.
constexpr std::chrono::milliseconds maxWait(500);
} // namespace

Outbox::Outbox(BusConnection &bus, Quotas &quotas)
    : m_bus(bus)
    , m_quotas(quotas)
    , m_pace(bus)
{
    tavoConnect(&m_bus, &BusConnection::turned, this, &Outbox::on_bus_turned);
    tavoConnect(&m_pace, &BusPace::changed, this, &Outbox::on_pace_changed);
}

void Outbox::send(const std::string &client, const BusMessage &message, std::size_t bytes,
                  Instead instead)
{
    add(client, {message, bytes, std::move(instead)});
}

void Outbox::call(const std::string &client, const BusMessage &call,
                  std::chrono::microseconds timeout, const BusCalls::Handler &handler)
{
    add(client, {call, 0, {}, Clock::now(), timeout, handler});
}

void Outbox::add(const std::string &client, Letter letter)
{
    const auto waiting = m_waiting.find(client);
    if (waiting != m_waiting.end()) {
        waiting->second.push_back(std::move(letter));
        ++m_count;
        sendSome();
    } else if (isNext(client) && m_pace.allows(letter.bytes)) {
        if (!m_waiting.empty()) {
            countTime(client, letter);
        }
        post(client, letter);
    } else {
        m_waiting[client].push_back(std::move(letter));
        ++m_count;
        sendSome();
    }
}

/// Whether a message to the client, for which none waits, can be sent at once.
bool Outbox::isNext(const std::string &client)
{
    if (m_waiting.empty()) {
        return !m_bus.isCongested();
    }
    const double time = m_quotas.sendingTurnOf(client).user;
    return !m_bus.isFull() &&
           std::all_of(m_waiting.begin(), m_waiting.end(), [&](const auto &other) {
               return time < m_quotas.sendingTurnOf(other.first).user;
           });
}

void Outbox::forget(const std::string &client)
{
    const auto waiting = m_waiting.extract(client);
    if (waiting.empty()) {
        return;
    }
    m_count -= waiting.mapped().size();
    for (const Letter &letter : waiting.mapped()) {
        if (!letter.message.isSealed() &&
            sd_bus_message_get_destination(letter.message.get()) == nullptr) {
            post(client, letter);
        }
    }
}

bool Outbox::isBackedUp() const
{
    return m_count > maxInAMoment;
}

bool Outbox::isLate(const std::string &client) const
{
    const auto waiting = m_waiting.find(client);
    if (waiting == m_waiting.end()) {
        return false;
    }
    const Letter &first = waiting->second.front();
    const Clock::duration age = Clock::now() - first.added;
    return first.bytes > largeBytes ? age > moment
                                    : age > lateAfter && waiting->second.size() > maxLate;
}

void Outbox::sendAll()
{
    while (!m_waiting.empty()) {
        sendNext(m_waiting.begin());
    }
}

void Outbox::on_bus_turned()
{
    sendSome();
}

void Outbox::on_pace_changed()
{
    sendSome();
}

void Outbox::sendSome()
{
    while (!m_waiting.empty() && !m_bus.isCongested()) {
        const auto client = next();
        if (client == m_waiting.end()) {
            return;
        }
        sendNext(client);
    }
}

void Outbox::sendNext(Waiting::iterator client)
{
    const std::string name = client->first;
    const Letter letter = std::move(client->second.front());
    client->second.pop_front();
    --m_count;
    if (client->second.empty()) {
        m_waiting.erase(client);
    }
    countTime(name, letter);
    post(name, letter);
}

void Outbox::countTime(const std::string &client, const Letter &letter)
{
    // Signals may have been caused by others; they must not keep the client's own calls waiting.
    const Quotas::Seconds time = double(letter.bytes) * timePerByte;
    if (letter.message.isSignal()) {
        m_quotas.addTime(client, time, Quotas::Sending);
    } else {
        m_quotas.addTime(client, time);
    }
}

void Outbox::post(const std::string &client, const Letter &letter)
{
    try {
        if (isGivenUp(letter)) {
            letter.instead().send();
        } else if (letter.handler) {
            m_bus.send(letter.message, letter.timeout, letter.handler);
        } else if (letter.message.isSealed()) {
            letter.message.copyFor(client).send();
        } else {
            letter.message.send();
        }
    } catch (const BusError &error) {
        LOG4CPLUS_WARN(logger, "A message to " << client << " can't be sent: " << error.what());
    }
}

bool Outbox::isSendable(Letter &letter)
{
    if (m_pace.allows(letter.bytes)) {
        return true;
    }
    if (!letter.tooLate) {
        // Many signals may be late at once; they must not keep the replies behind them waiting for each.
        letter.tooLate = (letter.message.isSignal() ? letter.added : Clock::now()) + maxWait;
    }
    return isGivenUp(letter);
}

bool Outbox::isGivenUp(const Letter &letter)
{
    return letter.instead && letter.tooLate && Clock::now() >= *letter.tooLate &&
           !m_pace.allows(letter.bytes);
}

Outbox::Waiting::iterator Outbox::next()
{
    auto best = m_waiting.end();
    Quotas::Turn least{};
    for (auto client = m_waiting.begin(); client != m_waiting.end(); ++client) {
        if (!isSendable(client->second.front())) {
            continue;
        }
        const Quotas::Turn turn = m_quotas.sendingTurnOf(client->first);
        if (best == m_waiting.end() || turn < least) {
            best = client;
            least = turn;
        }
    }
    return best;
}
