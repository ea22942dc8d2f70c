// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Timeline.h"

#include <chrono>
#include <stdexcept>

#include <QJsonDocument>

Timeline::Timeline(const QString &fileName)
    : m_file(fileName)
{
    if (!fileName.isEmpty() && !m_file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        throw std::runtime_error(QStringLiteral("timeline: can't write %1: %2")
                                     .arg(fileName, m_file.errorString())
                                     .toStdString());
    }
}

void Timeline::note(const QString &event, QJsonObject details)
{
    if (!m_file.isOpen()) {
        return;
    }
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    details.insert(QStringLiteral("t"), now.count());
    details.insert(QStringLiteral("event"), event);
    m_file.write(QJsonDocument(details).toJson(QJsonDocument::Compact) + '\n');
    m_file.flush();
}
