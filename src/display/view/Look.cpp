// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/Look.h"

#include <core/base/connect.h>
#include <core/records/enumerations.h>

#include <QGuiApplication>
#include <QLocale>

#include <utility>

Look::Look(const ShownMessage &message, QObject *parent)
    : QObject(parent)
    , m_message(message)
{
    qRegisterMetaType<Palette>();
    tavoConnect(&message, &ShownMessage::messageChanged, this, &Look::on_message_changed);
    tavoConnect(&message, &ShownMessage::messageChanged, this, &Look::spokenTextChanged);
    tavoConnect(&message, &ShownMessage::secondsChanged, this, &Look::secondsTextChanged);
    tavoConnect(&message, &ShownMessage::waitingCountChanged, this, &Look::waitingTextChanged);
    tavoConnect(this, &Look::waitingTextChanged, this, &Look::spokenTextChanged);
}

void Look::setConfiguration(const DisplayConfiguration &configuration)
{
    m_configuration = configuration;
    emitAll();
}

void Look::setScreen(qreal maxHeight, qreal pixelRatio)
{
    if (maxHeight != m_maxHeight || pixelRatio != m_pixelRatio) {
        m_maxHeight = maxHeight;
        m_pixelRatio = pixelRatio;
        Q_EMIT changed();
    }
}

void Look::setProblem(const QString &problem)
{
    m_problem = problem;
    Q_EMIT changed();
}

bool Look::isMirrored() const
{
    return QGuiApplication::layoutDirection() == Qt::RightToLeft;
}

Palette Look::palette() const
{
    return Palette::find(m_configuration.theme, m_message.priority());
}

QString Look::closeText() const
{
    return tr("Close");
}

QString Look::valueText() const
{
    return tr("Progress");
}

QString Look::secondsText() const
{
    constexpr int minute = 60;
    const int seconds = m_message.seconds();
    if (seconds > 2 * minute) {
        return tr("%1 min", "minutes that are left")
            .arg(QLocale().toString((seconds + minute - 1) / minute));
    }
    return tr("%1 s", "seconds that are left").arg(QLocale().toString(seconds));
}

QString Look::waitingText() const
{
    return tr("%1 more", "how many messages wait")
        .arg(QLocale().toString(m_message.waitingCount()));
}

QString Look::spokenText() const
{
    QStringList parts;
    if (m_message.priority() >= TavoNotificationItemPriority::Urgent) {
        parts << tr("Urgent");
    } else if (m_message.priority() == TavoNotificationItemPriority::High) {
        parts << tr("Important");
    }
    parts << m_message.application();
    if (m_message.waitingCount() > 0) {
        parts << waitingText();
    }
    parts << m_message.text();
    if (m_message.seconds() > 0) {
        parts << tr("For %1", "how long a message stays, such as 5 s").arg(secondsText());
    }
    parts.removeAll({});
    return parts.join(QStringLiteral(". "));
}

/// Most messages have the priority of the one before: nothing has to be coloured again.
void Look::on_message_changed()
{
    if (std::exchange(m_priority, m_message.priority()) != m_message.priority()) {
        Q_EMIT paletteChanged();
    }
}

void Look::emitAll()
{
    Q_EMIT changed();
    Q_EMIT paletteChanged();
    Q_EMIT secondsTextChanged();
    Q_EMIT waitingTextChanged();
}
