// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SlowRequests.h"

#include "Clients.h"

#include <algorithm>
#include <utility>

namespace {
constexpr std::chrono::milliseconds patience(500);
} // namespace

SlowRequests::SlowRequests(Clients &clients)
    : m_clients(clients)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    tavoConnect(&m_patience, &QTimer::timeout, this, &SlowRequests::goOn);
    tavoConnect(&m_clients, &Clients::left, this, &SlowRequests::on_clients_left);
}

std::size_t SlowRequests::count(const std::string &client) const
{
    const auto isItsOwn = [&client](const Request &request) { return request.client == client; };
    std::ptrdiff_t count = std::count_if(m_sent.begin(), m_sent.end(),
                                         [&](const auto &entry) { return isItsOwn(entry.second); });
    for (const auto &[user, requests] : m_waiting) {
        count += std::count_if(requests.begin(), requests.end(), isItsOwn);
    }
    return std::size_t(count);
}

CMReply<QVariant> SlowRequests::add(const std::string &client, const Send &send)
{
    return add({client, m_clients.quotas().userOf(client), send, {}, {}});
}

CMReply<QVariant> SlowRequests::addForGood(Quotas::UserId user, const Send &send)
{
    return add({{}, user, send, {}, {}});
}

CMReply<QVariant> SlowRequests::add(Request request)
{
    CMReply<QVariant> reply = request.reply;
    m_waiting[request.user].push_back(std::move(request));
    sendNext();
    return reply;
}

void SlowRequests::sendNext()
{
    if (std::exchange(m_isSending, true)) {
        return; // Without the module, replies are finished at once.
    }
    while (m_current == 0 && !m_waiting.empty()) {
        m_current = ++m_lastNumber;
        Request &request = m_sent[m_current] = takeNext();
        request.sent = Clock::now();
        m_patience.start();
        const Send send = request.send;
        send().onFinished(this, [this, number = m_current](const CMReply<QVariant> &finished) {
            finish(number, finished);
        });
    }
    m_isSending = false;
}

SlowRequests::Request SlowRequests::takeNext()
{
    const auto now = Clock::now();
    const auto next = std::min_element(
        m_waiting.begin(), m_waiting.end(), [this, now](const auto &left, const auto &right) {
            return m_times[left.first].at(now) < m_times[right.first].at(now);
        });
    Request request = std::move(next->second.front());
    next->second.pop_front();
    if (next->second.empty()) {
        m_waiting.erase(next);
    }
    return request;
}

void SlowRequests::finish(quint64 number, const CMReply<QVariant> &finished)
{
    const Request request = m_sent.extract(number).mapped();
    const auto now = Clock::now();
    m_times[request.user].add(now - request.sent, now);
    if (finished.error().isError()) {
        request.reply.setError(finished.error());
    } else {
        request.reply.setValue(finished.value());
    }
    if (m_current == number) {
        goOn();
    }
}

void SlowRequests::goOn()
{
    m_current = 0;
    m_patience.stop();
    sendNext();
}

void SlowRequests::on_clients_left(const std::string &client)
{
    for (auto user = m_waiting.begin(); user != m_waiting.end();) {
        Requests &requests = user->second;
        const auto isItsOwn = [&client](const Request &request) {
            return request.client == client;
        };
        requests.erase(std::remove_if(requests.begin(), requests.end(), isItsOwn), requests.end());
        user = requests.empty() ? m_waiting.erase(user) : std::next(user);
    }
}
