// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PendingCalls.h"

#include "Clients.h"

#include <bus/BusError.h>

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
    if (m_shares.count(client) == 0) {
        return;
    }
    for (auto pending = m_calls.begin(); pending != m_calls.end();) {
        const bool isItsOwn = pending->second.call.getSender() == client;
        if (isItsOwn) {
            release(pending->second);
        }
        pending = isItsOwn ? m_calls.erase(pending) : std::next(pending);
    }
}

void PendingCalls::checkRoom(const sdbus::MethodCall &call, std::size_t bytes) const
{
    const auto share = m_shares.find(call.getSender());
    const std::size_t added = bytes + UnreadBytes::messageBytes;
    const std::size_t own = added + (share == m_shares.end() ? 0 : share->second);
    const auto most = std::size_t(m_clients.limits().totalRequestBytes);
    if (m_bytes + added + own > most) {
        throw BusErrors::limitExceeded("Too many requests wait for their answers, of which all "
                                       "clients together may have " +
                                       std::to_string(most) + " bytes");
    }
}

void PendingCalls::clear()
{
    m_calls.clear();
    m_shares.clear();
    m_bytes = 0;
}

void PendingCalls::answer(const sdbus::MethodCall &call, const CMReply<QVariant> &reply,
                          Append append, std::size_t bytes)
{
    if (reply.isFinished()) {
        send(call, reply, append);
        return;
    }
    const quint64 number = ++m_lastNumber;
    const std::size_t taken = bytes + UnreadBytes::messageBytes;
    m_calls.emplace(number, PendingCall{call, append, taken});
    m_bytes += taken;
    m_shares[call.getSender()] += taken;
    reply.onFinished(
        this, [this, number](const CMReply<QVariant> &finished) { finish(number, finished); });
}

void PendingCalls::release(const PendingCall &pending)
{
    m_bytes -= pending.bytes;
    const auto share = m_shares.find(pending.call.getSender());
    share->second -= pending.bytes;
    if (share->second == 0) {
        m_shares.erase(share);
    }
}

void PendingCalls::finish(quint64 number, const CMReply<QVariant> &reply)
{
    auto pending = m_calls.extract(number);
    if (pending.empty()) {
        return;
    }
    release(pending.mapped());
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
