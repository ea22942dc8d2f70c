// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/commands/LiveClock.h"

#include <core/base/connect.h>

LiveClock::LiveClock(Terminal &terminal)
    : m_terminal(terminal)
{
    constexpr int secondMs = 1000;
    m_timer.setInterval(secondMs);
    tavoConnect(&m_timer, &QTimer::timeout, this, &LiveClock::on_timer_timeout);
}

void LiveClock::show(const QString &what)
{
    m_what = what;
    m_since.start();
    m_timer.start();
    on_timer_timeout();
}

void LiveClock::on_timer_timeout()
{
    constexpr int secondMs = 1000;
    m_terminal.showLive(
        QStringLiteral("%1, %2 s (Ctrl-C ends it)").arg(m_what).arg(m_since.elapsed() / secondMs));
}
