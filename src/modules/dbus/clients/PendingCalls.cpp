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
}

void PendingCalls::on_clients_left(const std::string &client)
{
    if (m_clients.quotas().held(client, Quotas::RequestBytes) == 0) {
        return;
    }
    for (auto pending = m_calls.begin(); pending != m_calls.end();) {
        const bool isItsOwn = pending->second.charge.client() == client;
        pending = isItsOwn ? m_calls.erase(pending) : std::next(pending);
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
}

void PendingCalls::answer(const BusMessage &call, const CMReply<QVariant> &reply,
                          const Write &write, Quotas::Charge charge)
{
    if (reply.isFinished()) {
        send(call, reply, write);
        return;
    }
    const quint64 number = ++m_lastNumber;
    m_calls.emplace(number, PendingCall{call, write, std::move(charge)});
    reply.onFinished(
        this, [this, number](const CMReply<QVariant> &finished) { finish(number, finished); });
}

void PendingCalls::finish(quint64 number, const CMReply<QVariant> &reply)
{
    auto pending = m_calls.extract(number);
    if (pending.empty()) {
        return;
    }
    const BusMessage &call = pending.mapped().call;
    m_clients.run(call, [&](const BusMessage &) { send(call, reply, pending.mapped().write); });
}

void PendingCalls::send(const BusMessage &call, const CMReply<QVariant> &reply, const Write &write)
{
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
