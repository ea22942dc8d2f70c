// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Timeline.h"

#include <QJsonDocument>

#include <stdexcept>

Timeline::Timeline(const QString &fileName, QObject *parent)
    : QObject(parent)
    , m_file(fileName)
{
    if (!fileName.isEmpty() &&
        !m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Append)) {
        throw std::runtime_error(QStringLiteral("timeline: can't write %1: %2")
                                     .arg(fileName, m_file.errorString())
                                     .toStdString());
    }
}

void Timeline::note(const QString &event, QJsonObject details, Moment moment)
{
    const QString id = details.value(QStringLiteral("id")).toString();
    if (m_file.isOpen()) {
        const std::chrono::duration<double> seconds = moment.time_since_epoch();
        details.insert(QStringLiteral("t"), seconds.count());
        details.insert(QStringLiteral("event"), event);
        m_file.write(QJsonDocument(details).toJson(QJsonDocument::Compact) + '\n');
        m_file.flush();
    }
    Q_EMIT noted(id.isEmpty() ? event : event + QLatin1Char(' ') + id);
}
