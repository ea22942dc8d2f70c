// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Script.h"

#include <core/tavo.h>

#include <QTimer>

Script::Script(Timeline *timeline, QObject *parent)
    : QObject(parent)
{
    tavoConnect(timeline, &Timeline::noted, this, &Script::on_timeline_noted);
}

void Script::step(const char *after, int delay, std::function<void()> act)
{
    m_steps.push_back({QString::fromLatin1(after), delay, std::move(act)});
}

void Script::on_timeline_noted(const QString &name)
{
    if (m_next < m_steps.size() && m_steps[m_next].after == name) {
        const Step &step = m_steps[m_next++];
        QTimer::singleShot(step.delay, Qt::PreciseTimer, this, step.act);
    }
}
