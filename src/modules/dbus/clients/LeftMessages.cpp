// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "LeftMessages.h"

#include <algorithm>
#include <limits>

namespace {
/// A message that is shown no longer than this keeps its place after its client has left.
constexpr int maxBriefMs = 60'000;

/// Between two turns, the display handles what the last one has requested.
constexpr int maxPerTurn = 100;
constexpr int pauseMs = 5;
} // namespace

LeftMessages::LeftMessages()
{
    m_turnTimer.setInterval(pauseMs);
    m_turnTimer.setTimerType(Qt::PreciseTimer);
    tavoConnect(&m_turnTimer, &QTimer::timeout, this, &LeftMessages::on_turnTimer_timeout);
}

void LeftMessages::Leave::operator()(LeftMessages *messages) const
{
    messages->m_messages.erase(key);
}

bool LeftMessages::givesWay(Priority priority, int timeoutMs)
{
    return priority >= Priority::Urgent && (timeoutMs <= 0 || timeoutMs > maxBriefMs);
}

LeftMessages::Priority LeftMessages::below(Priority priority)
{
    constexpr int lowest = std::numeric_limits<int>::min();
    return Priority(std::max(int(priority), lowest + 1) - 1);
}

LeftMessages::Place LeftMessages::add(Priority priority, GiveWay giveWay)
{
    const Leave::Key key{priority, ++m_lastNumber};
    m_messages.emplace(key, std::move(giveWay));
    return {this, Leave{key}};
}

void LeftMessages::makeWay(Priority priority)
{
    const auto first = m_messages.lower_bound({priority, 0});
    if (first != m_messages.end() && first->first.first == priority) {
        m_giving[priority] = m_lastNumber;
        m_turnTimer.start();
    }
}

void LeftMessages::on_turnTimer_timeout()
{
    for (int given = 0; given < maxPerTurn && !m_giving.empty(); ++given) {
        const auto giving = m_giving.begin();
        const auto message = m_messages.lower_bound({giving->first, 0});
        if (message == m_messages.end() || message->first > Leave::Key(*giving)) {
            m_giving.erase(giving);
            continue;
        }
        const GiveWay giveWay = std::move(message->second);
        m_messages.erase(message);
        giveWay();
    }
    if (m_giving.empty()) {
        m_turnTimer.stop();
    }
}
