// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/Countdown.h"

#include <core/base/connect.h>

#include <QElapsedTimer>

namespace {
constexpr int secondMs = 1000;

qint64 monotonicMs()
{
    QElapsedTimer timer;
    timer.start();
    return timer.msecsSinceReference();
}
} // namespace

Countdown::Countdown(QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    tavoConnect(&m_timer, &QTimer::timeout, this, &Countdown::on_timer_timeout);
}

void Countdown::start(qint64 since, int remainingMs)
{
    m_end = since + remainingMs;
    update();
}

void Countdown::stop()
{
    m_timer.stop();
    if (m_seconds != none) {
        m_seconds = none;
        Q_EMIT changed();
    }
}

void Countdown::on_timer_timeout()
{
    update();
}

void Countdown::update()
{
    const qint64 left = qMax(qint64(0), m_end - monotonicMs());
    const int seconds = int((left + secondMs - 1) / secondMs);
    if (left > 0) {
        m_timer.start(int(left - qint64(seconds - 1) * secondMs));
    } else {
        m_timer.stop();
    }
    if (seconds != m_seconds) {
        m_seconds = seconds;
        Q_EMIT changed();
    }
}
