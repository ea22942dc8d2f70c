// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PendingCalls.h"

#include "Clients.h"
#include <bus/BusError.h>
#include <bus/BusWriter.h>
#include <bus/ModelErrors.h>

#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// For so long, a request counts as recent.
constexpr std::chrono::milliseconds recentTime(200);

std::size_t bytesOf(const CMError &error)
{
    constexpr std::size_t maxBytesPerCharacter = 3;
    const int characters =
        error.message().toString().size() + error.name().size() + error.title().toString().size();
    return maxBytesPerCharacter * std::size_t(characters);
}
} // namespace

PendingCalls::PendingCalls(Clients &clients)
    : m_clients(clients)
{
    tavoConnect(&m_clients, &Clients::left, this, &PendingCalls::on_clients_left);
    m_timer.setInterval(recentTime / 4);
    tavoConnect(&m_timer, &QTimer::timeout, this, &PendingCalls::on_timer_timeout);
    m_clients.setHeldBack([this](const std::string &client) { return isHeldBack(client); });
}

bool PendingCalls::isHeldBack(const std::string &client) const
{
    if (m_recent.empty()) {
        return false;
    }
    const auto recent = m_recent.find(m_clients.quotas().userOf(client));
    return recent != m_recent.end() && recent->second >= maxRecent;
}

/// The call is no longer recent.
void PendingCalls::settle(PendingCall &pending)
{
    if (!std::exchange(pending.isRecent, false)) {
        return;
    }
    const auto recent = m_recent.find(pending.user);
    if (recent->second >= maxRecent) {
        m_clients.resume();
    }
    recent->second -= pending.weight;
    if (recent->second == 0) {
        m_recent.erase(recent);
    }
}

PendingCalls::Calls::iterator PendingCalls::erase(Calls::iterator pending)
{
    settle(pending->second);
    return m_calls.erase(pending);
}

void PendingCalls::on_timer_timeout()
{
    const Clock::time_point now = Clock::now();
    auto pending = m_calls.lower_bound(m_firstRecent);
    while (pending != m_calls.end() && now - pending->second.sent >= recentTime) {
        settle(pending->second);
        ++pending;
    }
    m_firstRecent = pending == m_calls.end() ? m_lastNumber + 1 : pending->first;
    if (m_recent.empty()) {
        m_timer.stop();
    }
}

void PendingCalls::on_clients_left(const std::string &client)
{
    if (m_clients.quotas().held(client, Quotas::RequestBytes) == 0) {
        return;
    }
    for (auto pending = m_calls.begin(); pending != m_calls.end();) {
        const bool isItsOwn = pending->second.charge.client() == client;
        pending = isItsOwn ? erase(pending) : std::next(pending);
    }
}

Quotas::Charge PendingCalls::charge(const BusMessage &call, std::size_t bytes)
{
    return m_clients.quotas().charge(call.sender(),
                                     {Quotas::RequestBytes, bytes + UnreadBytes::messageBytes});
}

void PendingCalls::clear()
{
    m_calls.clear();
    m_recent.clear();
    m_timer.stop();
}

void PendingCalls::answer(const BusMessage &call, const CMReply<QVariant> &reply,
                          const Write &write, Quotas::Charge charge, int weight)
{
    if (reply.isFinished()) {
        send(call, reply, write);
        return;
    }
    const quint64 number = ++m_lastNumber;
    const auto user = charge.user();
    m_calls.emplace(number,
                    PendingCall{call, write, std::move(charge), Clock::now(), user, weight});
    m_recent[user] += weight;
    if (!m_timer.isActive()) {
        m_timer.start();
    }
    reply.onFinished(
        this, [this, number](const CMReply<QVariant> &finished) { finish(number, finished); });
}

void PendingCalls::finish(quint64 number, const CMReply<QVariant> &reply)
{
    const auto found = m_calls.find(number);
    if (found == m_calls.end()) {
        return;
    }
    settle(found->second);
    const PendingCall pending = std::move(found->second);
    m_calls.erase(found);
    m_clients.run(pending.call,
                  [&](const BusMessage &) { send(pending.call, reply, pending.write); });
}

void PendingCalls::send(const BusMessage &call, const CMReply<QVariant> &reply, const Write &write)
{
    if (!call.expectsReply()) {
        return;
    }
    const CMError error = reply.error();
    if (error.isError()) {
        m_clients.reply(call, ModelErrors::createReply(call, error), bytesOf(error));
        return;
    }
    BusWriter answer(call.createReply(), m_clients.limits().messageBytes);
    try {
        write(answer, reply.value());
    } catch (const BusError &unsupported) {
        m_clients.reply(call, call.createErrorReply(unsupported), 0);
        return;
    }
    m_clients.reply(call, answer.message(), answer.bytesWritten());
}
