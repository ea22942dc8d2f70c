// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SlowRequests.h"

#include "Clients.h"

#include <algorithm>
#include <iterator>

SlowRequests::SlowRequests(Clients &clients)
    : m_clients(clients)
{
    tavoConnect(&m_clients, &Clients::left, this, &SlowRequests::on_clients_left);
}

std::size_t SlowRequests::count(const std::string &client) const
{
    std::size_t count = 0;
    for (const auto &[user, requests] : m_requests) {
        count += std::size_t(
            std::count_if(requests.begin(), requests.end(),
                          [&client](const Request &request) { return request.client == client; }));
    }
    return count;
}

CMReply<QVariant> SlowRequests::add(const std::string &client, const Send &send)
{
    const Quotas::UserId user = m_clients.quotas().userOf(client);
    Requests &requests = m_requests[user];
    CMReply<QVariant> reply;
    requests.push_back({client, send, reply});
    if (requests.size() == 1) {
        sendFirst(user);
    }
    return reply;
}

void SlowRequests::sendFirst(Quotas::UserId user)
{
    // Without the module, the reply is finished at once, and then the request does not exist any more.
    m_requests.at(user).front().send().onFinished(
        this, [this, user](const CMReply<QVariant> &finished) { finishFirst(user, finished); });
}

void SlowRequests::finishFirst(Quotas::UserId user, const CMReply<QVariant> &finished)
{
    const auto requests = m_requests.find(user);
    const CMReply<QVariant> reply = requests->second.front().reply;
    requests->second.pop_front();
    if (requests->second.empty()) {
        m_requests.erase(requests);
    } else {
        sendFirst(user);
    }
    if (finished.error().isError()) {
        reply.setError(finished.error());
    } else {
        reply.setValue(finished.value());
    }
}

void SlowRequests::on_clients_left(const std::string &client)
{
    for (auto &[user, requests] : m_requests) {
        const auto isItsOwn = [&client](const Request &request) {
            return request.client == client;
        };
        requests.erase(std::remove_if(std::next(requests.begin()), requests.end(), isItsOwn),
                       requests.end());
    }
}
