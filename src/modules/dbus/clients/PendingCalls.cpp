// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PendingCalls.h"

#include "Clients.h"

#include <bus/BusError.h>

#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

std::size_t bytesOf(const CMError &error)
{
    constexpr std::size_t mostBytesOfCharacter = 3;
    const int characters =
        error.message().toString().size() + error.name().size() + error.title().toString().size();
    return mostBytesOfCharacter * std::size_t(characters);
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

Quotas::Charge PendingCalls::charge(const sdbus::MethodCall &call, std::size_t bytes)
{
    return m_clients.quotas().charge(call.getSender(), Quotas::RequestBytes,
                                     bytes + UnreadBytes::messageBytes);
}

void PendingCalls::clear()
{
    m_calls.clear();
}

void PendingCalls::answer(const sdbus::MethodCall &call, const CMReply<QVariant> &reply,
                          Append append, Quotas::Charge charge)
{
    if (reply.isFinished()) {
        send(call, reply, append);
        return;
    }
    const quint64 number = ++m_lastNumber;
    m_calls.emplace(number, PendingCall{call, append, std::move(charge)});
    reply.onFinished(
        this, [this, number](const CMReply<QVariant> &finished) { finish(number, finished); });
}

void PendingCalls::finish(quint64 number, const CMReply<QVariant> &reply)
{
    auto pending = m_calls.extract(number);
    if (pending.empty()) {
        return;
    }
    try {
        send(pending.mapped().call, reply, pending.mapped().append);
    } catch (const std::exception &error) {
        LOG4CPLUS_WARN(logger, "An answer can't be written: " << error.what());
    }
}

void PendingCalls::send(const sdbus::MethodCall &call, const CMReply<QVariant> &reply,
                        Append append)
{
    const CMError error = reply.error();
    if (error.isError()) {
        m_clients.answer(call, BusError::reply(call, error), bytesOf(error));
        return;
    }
    sdbus::MethodReply answer = call.createReply();
    std::size_t bytes = 0;
    try {
        bytes = append(answer, reply.value());
    } catch (const sdbus::Error &unsupported) {
        answer = call.createErrorReply(unsupported);
    }
    m_clients.answer(call, answer, bytes);
}
