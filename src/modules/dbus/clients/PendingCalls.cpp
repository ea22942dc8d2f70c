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
        if (pending->second.charge.client() == client) {
            m_clients.moduleLoad().remove(pending->second.load);
            pending = m_calls.erase(pending);
        } else {
            ++pending;
        }
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
                          const Write &write, Quotas::Charge charge, ModuleLoad::Time takes)
{
    if (reply.isFinished()) {
        send(call, reply, write);
        return;
    }
    const quint64 number = ++m_lastNumber;
    const quint64 load = m_clients.moduleLoad().add(charge.user(), takes);
    m_calls.emplace(number, PendingCall{call, write, std::move(charge), load});
    reply.onFinished(
        this, [this, number](const CMReply<QVariant> &finished) { finish(number, finished); });
}

void PendingCalls::finish(quint64 number, const CMReply<QVariant> &reply)
{
    const auto found = m_calls.find(number);
    if (found == m_calls.end()) {
        return;
    }
    m_clients.moduleLoad().remove(found->second.load);
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
