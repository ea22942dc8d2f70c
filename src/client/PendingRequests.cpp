// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/PendingRequests.h"

#include <algorithm>
#include <utility>

quint64 PendingRequests::add(QObject *context, const Finish &finish, int patienceMs)
{
    Request &request = m_requests[++m_lastNumber];
    request = {context, finish, patienceMs, {}};
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
    // The bus library takes nothing for no limit of its own.
    return std::chrono::milliseconds(
        std::max<qint64>(request.patienceMs - request.since.elapsed(), 1));
}

void PendingRequests::answer(quint64 number, sdbus::MethodReply &reply, const sdbus::Error *error,
                             Silent suspect)
{
    const Request request = take(number);
    if (!request.context) {
        return;
    }
    if (error != nullptr) {
        const bool isOverdue = request.since.elapsed() >= request.patienceMs;
        const Silent who = isOverdue ? suspect : Silent::Nobody;
        request.finish(nullptr, hostError(*error, reply, who, request.patienceMs));
        return;
    }
    try {
        request.finish(&reply, {});
    } catch (const sdbus::Error &unreadable) {
        request.finish(nullptr, ownError(unreadable));
    }
}

void PendingRequests::failLater(quint64 number, const CMError &error)
{
    QMetaObject::invokeMethod(
        this,
        [this, number, error] {
            const Request request = take(number);
            if (request.context) {
                request.finish(nullptr, error);
            }
        },
        Qt::QueuedConnection);
}

void PendingRequests::failAll(const CMError &error)
{
    for (const auto &each : std::exchange(m_requests, {})) {
        if (each.second.context) {
            each.second.finish(nullptr, error);
        }
    }
}
