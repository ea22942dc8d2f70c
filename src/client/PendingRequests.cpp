// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/PendingRequests.h"

#include <algorithm>
#include <utility>

quint64 PendingRequests::add(QObject *context, const Finish &finish, int timeoutMs)
{
    Request &request = m_requests[++m_lastNumber];
    request = {context, finish, timeoutMs, {}};
    request.since.start();
    return m_lastNumber;
}

PendingRequests::Request PendingRequests::take(quint64 number)
{
    const auto found = m_requests.find(number);
    return found == m_requests.end() ? Request() : m_requests.extract(found).mapped();
}

std::chrono::milliseconds PendingRequests::timeLeft(quint64 number) const
{
    const Request &request = m_requests.at(number);
    // To sd-bus, zero means its default timeout.
    return std::chrono::milliseconds(
        std::max<qint64>(request.timeoutMs - request.since.elapsed(), 1));
}

void PendingRequests::finish(quint64 number, const BusMessage &reply, Silent suspect)
{
    const Request request = take(number);
    if (!request.context) {
        return;
    }
    if (reply.error()) {
        const bool isOverdue = request.since.elapsed() >= request.timeoutMs;
        const Silent who = isOverdue ? suspect : Silent::Nobody;
        request.finish(hostError(reply, who, request.timeoutMs));
        return;
    }
    try {
        request.finish(reply);
    } catch (const BusError &unreadable) {
        request.finish(ownError(unreadable));
    }
}

void PendingRequests::failLater(quint64 number, const CMError &error)
{
    QMetaObject::invokeMethod(
        this,
        [this, number, error] {
            const Request request = take(number);
            if (request.context) {
                request.finish(error);
            }
        },
        Qt::QueuedConnection);
}

void PendingRequests::failAll(const CMError &error)
{
    for (const auto &each : std::exchange(m_requests, {})) {
        if (each.second.context) {
            each.second.finish(error);
        }
    }
}
