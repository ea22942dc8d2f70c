// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModuleLoad.h"

#include <algorithm>
#include <cmath>

namespace {
/// Of all users together.
constexpr std::chrono::milliseconds most(40);

constexpr std::chrono::milliseconds longest(200);

/// The user's calls to other modules wait, too, so it must not be for long.
constexpr std::chrono::seconds longestOfAttention(1);

/// Requests differ, so the next ones may take longer than those before: at first a user sends no more than 8.
constexpr ModuleLoad::Time leastOfAttention = 2 * ModuleLoad::usual;

/// By then, half of what a request took is forgotten.
constexpr std::chrono::seconds halfLife(10);
} // namespace

ModuleLoad::ModuleLoad()
{
    m_timer.setInterval(longest / 4);
    tavoConnect(&m_timer, &QTimer::timeout, this, &ModuleLoad::on_timer_timeout);
}

quint64 ModuleLoad::add(Quotas::UserId user, Time takes)
{
    return add(user, takes, longest);
}

quint64 ModuleLoad::add(Quotas::UserId user, Time takes, Clock::duration atMost)
{
    const Clock::time_point now = Clock::now();
    m_requests.emplace(++m_lastNumber, Request{user, takes, now + atMost});
    m_loads[user] += takes;
    m_total += takes;
    if (!m_timer.isActive()) {
        m_timer.start();
    }
    return m_lastNumber;
}

void ModuleLoad::remove(quint64 number)
{
    const auto request = m_requests.find(number);
    if (request != m_requests.end()) {
        erase(request);
    }
}

void ModuleLoad::addForAttention(Quotas::UserId user, const CMReply<QVariant> &reply)
{
    if (reply.isFinished()) {
        return;
    }
    const Clock::time_point now = Clock::now();
    const quint64 number =
        add(user, std::max(expectedOfAttention(now), leastOfAttention), longestOfAttention);
    reply.onFinished(this, [this, number, now](const CMVoidReply &) { finish(number, now); });
}

void ModuleLoad::finish(quint64 number, Clock::time_point sent)
{
    const Clock::time_point now = Clock::now();
    // If this thread was busy, it may have taken less; more than the most makes no difference.
    const auto taken = std::min<Time>(
        most,
        std::chrono::duration_cast<Time>(now - std::max(sent, std::exchange(m_lastHandled, now))));
    if (const Time expected = expectedOfAttention(now); taken > expected) {
        m_longest = taken;
        m_longestSet = now;
    }
    remove(number);
}

ModuleLoad::Time ModuleLoad::expectedOfAttention(Clock::time_point now) const
{
    const std::chrono::duration<double> past = now - m_longestSet;
    return std::chrono::duration_cast<Time>(m_longest * std::exp2(-past / halfLife));
}

bool ModuleLoad::isFull(Quotas::UserId user) const
{
    const auto load = m_loads.find(user);
    return load != m_loads.end() && load->second >= most - m_total;
}

ModuleLoad::Requests::iterator ModuleLoad::erase(Requests::iterator request)
{
    const auto load = m_loads.find(request->second.user);
    load->second -= request->second.takes;
    m_total -= request->second.takes;
    if (load->second.count() == 0) {
        m_loads.erase(load);
    }
    const auto next = m_requests.erase(request);
    Q_EMIT fell();
    return next;
}

void ModuleLoad::on_timer_timeout()
{
    const Clock::time_point now = Clock::now();
    for (auto request = m_requests.begin(); request != m_requests.end();) {
        request = request->second.until <= now ? erase(request) : std::next(request);
    }
    if (m_requests.empty()) {
        m_timer.stop();
    }
}
