// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/view/ShownMessage.h"

#include "display/text/ShownText.h"
#include <core/base/connect.h>

ShownMessage::ShownMessage(MessageSource *source, QObject *parent)
    : QObject(parent)
    , m_source(*source)
{
    m_armTimer.setSingleShot(true);
    m_armTimer.setTimerType(Qt::PreciseTimer);
    m_armTimer.setInterval(armDelayMs);
    tavoConnect(&m_armTimer, &QTimer::timeout, this, &ShownMessage::armedChanged);
    tavoConnect(&m_countdown, &Countdown::changed, this, &ShownMessage::secondsChanged);
    tavoConnect(source, &MessageSource::expected, this, &ShownMessage::expected);
    tavoConnect(source, &MessageSource::shown, this, &ShownMessage::on_source_shown);
    tavoConnect(source, &MessageSource::messageChanged, this,
                &ShownMessage::on_source_messageChanged);
    tavoConnect(source, &MessageSource::waitingChanged, this,
                &ShownMessage::on_source_waitingChanged);
    tavoConnect(source, &MessageSource::emptied, this, &ShownMessage::on_source_emptied);
}

QString ShownMessage::picture() const
{
    return m_message.picture.isEmpty()
               ? QString()
               : QStringLiteral("image://tavo/message/%1").arg(m_pictureNumber);
}

QStringList ShownMessage::actionLabels() const
{
    QStringList labels;
    for (const MessageAction &action : m_message.actions) {
        labels.append(action.label);
    }
    return labels;
}

QStringList ShownMessage::actionIcons() const
{
    QStringList icons;
    for (const MessageAction &action : m_message.actions) {
        icons.append(action.icon);
    }
    return icons;
}

void ShownMessage::close()
{
    if (isArmed()) {
        m_source.close(m_head.path);
    }
}

void ShownMessage::activate(int action)
{
    if (isArmed() && action >= 0 && action < m_message.actions.size()) {
        m_source.activate(m_message.actions[action].path);
    }
}

void ShownMessage::activateDefault()
{
    if (isArmed() && hasDefaultAction()) {
        m_source.activate(m_message.defaultAction);
    }
}

void ShownMessage::on_source_shown(const Head &head, const Message &message)
{
    if (m_isShown) {
        Q_EMIT ended();
    }
    m_head = head;
    m_isShown = true;
    m_armTimer.start();
    if (head.remaining > 0) {
        m_countdown.start(head.since, head.remaining);
    } else {
        m_countdown.stop();
    }
    setMessage(message);
    Q_EMIT waitingCountChanged();
    Q_EMIT armedChanged();
    Q_EMIT shown();
    if (message.isWhole) {
        Q_EMIT completed();
    }
}

void ShownMessage::on_source_messageChanged(const Message &message)
{
    if (message.actions != m_message.actions) {
        m_armTimer.start();
        Q_EMIT armedChanged();
    }
    const bool saysMore = !m_message.isWhole ||
                          (message.value == Message::noValue &&
                           (message.title != m_message.title || message.text != m_message.text));
    setMessage(message);
    if (saysMore && message.isWhole) {
        Q_EMIT completed();
    }
}

void ShownMessage::on_source_waitingChanged(int count)
{
    m_head.waitingCount = count;
    Q_EMIT waitingCountChanged();
}

void ShownMessage::on_source_emptied()
{
    if (m_isShown) {
        Q_EMIT ended();
    }
    m_isShown = false;
    m_armTimer.stop();
    m_countdown.stop();
    m_message.picture = {}; // may be large
    Q_EMIT pictureChanged({});
    Q_EMIT hidden();
}

void ShownMessage::setMessage(const Message &message)
{
    const bool isOtherPicture = !(message.picture == m_message.picture);
    m_message = message;
    const bool isStyled = !message.styled.isEmpty();
    m_textParts = ::textParts(isStyled ? message.styled : message.text, isStyled);
    if (isOtherPicture) {
        ++m_pictureNumber;
        Q_EMIT pictureChanged(message.picture);
    }
    Q_EMIT messageChanged();
}
