// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/SourceRates.h"

#include <algorithm>

namespace {
constexpr int maxSources = 1000;
} // namespace

bool SourceRates::take(const QString &source, qint64 now, int weight)
{
    if (!m_busyUntil.contains(source) && m_busyUntil.size() >= maxSources) {
        // The one that has sent the least, so that many new names neither lift the limit of those that send
        // much, nor keep others back.
        m_busyUntil.erase(std::min_element(m_busyUntil.begin(), m_busyUntil.end()));
    }
    qint64 &busyUntil = m_busyUntil[source];
    const qint64 cost = qint64(m_limit.periodMs) * weight / m_limit.count;
    const qint64 next = std::max(busyUntil, now) + cost;
    if (next - now > m_limit.periodMs) {
        return false;
    }
    busyUntil = next;
    return true;
}
