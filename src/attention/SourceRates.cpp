// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/SourceRates.h"

#include <algorithm>

namespace {
constexpr int maxSources = 1000;
} // namespace

bool SourceRates::take(const QString &source, qint64 now)
{
    if (!m_busyUntil.contains(source) && m_busyUntil.size() >= maxSources) {
        for (auto busy = m_busyUntil.begin(); busy != m_busyUntil.end();) {
            busy = *busy <= now ? m_busyUntil.erase(busy) : std::next(busy);
        }
        if (m_busyUntil.size() >= maxSources) {
            return false;
        }
    }
    qint64 &busyUntil = m_busyUntil[source];
    const qint64 cost = m_limit.periodMs / m_limit.count;
    const qint64 next = std::max(busyUntil, now) + cost;
    if (next - now > m_limit.periodMs) {
        return false;
    }
    busyUntil = next;
    return true;
}
