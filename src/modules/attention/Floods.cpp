// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Floods.h"

#include <core/base/connect.h>

#include <algorithm>
#include <limits>

namespace {
constexpr int maxQuietMs = 10000;
constexpr int maxLengthMs = 300000;

/// Of sources. The rest count as one.
constexpr int maxFloods = 1000;
} // namespace

Floods::Floods()
{
    m_clock.start();
    setPeriod(maxQuietMs);
    m_timer.setSingleShot(true);
    tavoConnect(&m_timer, &QTimer::timeout, this, &Floods::on_timer_timeout);
}

void Floods::setPeriod(int ms)
{
    m_quietMs = std::min(ms, maxQuietMs);
}

int Floods::count(const QString &source, const QString &application, bool isKept)
{
    const bool isOneOfTheRest = m_floods.size() >= maxFloods && !m_floods.contains(source);
    Flood &flood = m_floods[isOneOfTheRest ? QString() : source];
    flood.last = m_clock.elapsed();
    if (flood.count == 0) {
        flood.application = isOneOfTheRest ? QString() : application;
        flood.begin = flood.last;
    }
    ++flood.count;
    flood.kept += isKept ? 1 : 0;
    if (!m_timer.isActive()) {
        m_timer.start(m_quietMs);
    }
    return flood.count;
}

qint64 Floods::endOf(const Flood &flood) const
{
    return std::min(flood.last + m_quietMs, flood.begin + maxLengthMs);
}

void Floods::on_timer_timeout()
{
    const qint64 now = m_clock.elapsed();
    qint64 next = std::numeric_limits<qint64>::max();
    const QStringList sources = m_floods.keys();
    for (const QString &source : sources) {
        const qint64 end = endOf(m_floods.value(source));
        if (end > now) {
            next = std::min(next, end);
            continue;
        }
        const Flood flood = m_floods.take(source);
        if (flood.kept > 0) {
            Q_EMIT over(source, flood.application, flood.kept);
        }
    }
    if (!m_floods.isEmpty()) {
        m_timer.start(int(next - now));
    }
}
