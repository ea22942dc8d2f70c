// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/message/DemoMessages.h"

#include "display/text/ShownText.h"
#include <core/base/connect.h>
#include <core/records/enumerations.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPainter>

namespace {
using Priority = TavoNotificationItemPriority;

struct Look
{
    int priority;
    int timeoutMs;
    const char *title;
    const char *text;
    const char *markup;
    const char *application;
    const char *icon;
    bool hasImage;
    int value;
    QVector<const char *> actions;
};

QVector<Look> looks()
{
    return {
        {Priority::Normal,
         4000,
         QT_TRANSLATE_NOOP("DemoMessages", "Parcel"),
         QT_TRANSLATE_NOOP("DemoMessages", "At the front door."),
         "",
         QT_TRANSLATE_NOOP("DemoMessages", "Post"),
         "mail-unread",
         false,
         Message::noValue,
         {}},
        {Priority::Low,
         3000,
         QT_TRANSLATE_NOOP("DemoMessages", "Updates"),
         "",
         "",
         QT_TRANSLATE_NOOP("DemoMessages", "System"),
         "",
         false,
         42,
         {}},
        {Priority::High,
         5000,
         QT_TRANSLATE_NOOP("DemoMessages", "The window is open"),
         QT_TRANSLATE_NOOP("DemoMessages", "It will rain in ten minutes. The heating is off."),
         QT_TRANSLATE_NOOP("DemoMessages",
                           "It will <b>rain</b> in <i>ten minutes</i>. The heating is <u>off</u>."),
         QT_TRANSLATE_NOOP("DemoMessages", "House"),
         "",
         true,
         Message::noValue,
         {}},
        {Priority::Urgent,
         8000,
         QT_TRANSLATE_NOOP("DemoMessages", "Somebody rings"),
         QT_TRANSLATE_NOOP("DemoMessages", "At the garden gate, for the second time."),
         "",
         QT_TRANSLATE_NOOP("DemoMessages", "Doorbell"),
         "",
         true,
         Message::noValue,
         {QT_TRANSLATE_NOOP("DemoMessages", "Open"),
          QT_TRANSLATE_NOOP("DemoMessages", "In a moment")}},
    };
}

QString translated(const char *text)
{
    return QCoreApplication::translate("DemoMessages", text);
}

/// A picture without a file: a sun above the ground.
QImage picture()
{
    constexpr int size = 128;
    QImage image(size, size, QImage::Format_RGBA8888);
    image.fill(QColor(0x8e, 0xc5, 0xf0));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xff, 0xd2, 0x4a));
    painter.drawEllipse(QPoint(size * 2 / 3, size / 3), size / 6, size / 6);
    painter.setBrush(QColor(0x3f, 0x7d, 0x46));
    painter.drawEllipse(QPoint(size / 3, size + size / 4), size * 3 / 4, size * 2 / 3);
    return image;
}

Message messageOf(const Look &look)
{
    Message message;
    message.title = translated(look.title);
    message.text = translated(look.text);
    message.styled = styledText(translated(look.markup));
    message.application = translated(look.application);
    message.picture.source = QLatin1String(look.icon);
    if (look.hasImage) {
        message.picture.pixels = picture();
    }
    message.value = look.value;
    for (const char *label : look.actions) {
        message.actions.append({CMPath(QStringLiteral("/demo/action")), translated(label), {}});
    }
    return message;
}
} // namespace

DemoMessages::DemoMessages(QObject *parent)
    : MessageSource(parent)
{
    m_timer.setSingleShot(true);
    tavoConnect(&m_timer, &QTimer::timeout, this, &DemoMessages::on_timer_timeout);
}

void DemoMessages::start()
{
    showNext();
}

void DemoMessages::close(const CMPath & /*path*/)
{
    m_timer.start(0);
}

void DemoMessages::activate(const CMPath & /*action*/)
{
    m_timer.start(0);
}

void DemoMessages::on_timer_timeout()
{
    showNext();
}

void DemoMessages::showNext()
{
    const QVector<Look> all = looks();
    if (m_next == all.size()) {
        m_timer.stop();
        Q_EMIT emptied();
        Q_EMIT finished();
        return;
    }
    const Look &look = all[m_next];
    QElapsedTimer now;
    now.start();
    Head head;
    head.path = CMPath(QStringLiteral("/demo/%1").arg(m_next));
    head.priority = look.priority;
    head.since = now.msecsSinceReference();
    head.remaining = look.timeoutMs;
    head.waitingCount = all.size() - 1 - m_next;
    ++m_next;
    m_timer.start(look.timeoutMs);
    Q_EMIT shown(head, messageOf(look));
}
