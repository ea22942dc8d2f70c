// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "LeftMessages.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace {
/// Others wait so long for a message that was left.
constexpr int maxBriefMs = 60'000;
} // namespace

LeftMessages::Place::~Place()
{
    if (m_messages != nullptr) {
        m_messages->m_messages.erase(m_key);
    }
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
    const Place::Key key{priority, ++m_lastNumber};
    m_messages.emplace(key, std::move(giveWay));
    return {this, key};
}

void LeftMessages::makeWay(Priority priority)
{
    // They may be changed by what gives way.
    std::vector<GiveWay> giving;
    auto message = m_messages.lower_bound({priority, 0});
    while (message != m_messages.end() && message->first.first == priority) {
        giving.push_back(std::move(message->second));
        message = m_messages.erase(message);
    }
    for (const GiveWay &giveWay : giving) {
        giveWay();
    }
}
