// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ActionLog.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

void ActionLog::note(const QString &action)
{
    const QByteArray text = action.toUtf8();
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    const std::lock_guard lock(m_mutex);
    auto &line = m_lines[m_count % length];
    std::snprintf(line.data(), line.size(), "%.3f %s", now.count(), text.constData());
    ++m_count;
}

QStringList ActionLog::last() const
{
    const std::lock_guard lock(m_mutex);
    QStringList lines;
    for (std::size_t i = m_count - std::min(m_count, length); i < m_count; ++i) {
        lines.append(QString::fromUtf8(m_lines[i % length].data()));
    }
    return lines;
}
