// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/AttentionWindows.h"

#include <core/base/connect.h>

#include <QQmlContext>

AttentionWindows::AttentionWindows(HostAttention &attention, QQmlEngine &engine, QObject *parent)
    : QObject(parent)
    , m_attention(attention)
    , m_view(attention)
    , m_mark(engine, SideWindow::Kind::Mark, QUrl(QStringLiteral("qrc:/tavo/display/Mark.qml")))
    , m_history(engine, SideWindow::Kind::View,
                QUrl(QStringLiteral("qrc:/tavo/display/History.qml")))
{
    engine.rootContext()->setContextProperty(QStringLiteral("attention"), &m_view);
    // Windows are not made and destroyed while they handle an event.
    tavoConnect(&attention, &HostAttention::changed, this, &AttentionWindows::update,
                Qt::QueuedConnection);
    tavoConnect(&m_view, &AttentionView::historyRequested, this, &AttentionWindows::openHistory,
                Qt::QueuedConnection);
    tavoConnect(&m_view, &AttentionView::closeRequested, this, &AttentionWindows::closeHistory,
                Qt::QueuedConnection);
    tavoConnect(&m_history, &SideWindow::closed, this, &AttentionWindows::closeHistory,
                Qt::QueuedConnection);
}

void AttentionWindows::setConfiguration(const DisplayConfiguration &configuration)
{
    m_markMode = configuration.mark;
    m_view.setConfiguration(configuration);
    m_mark.setConfiguration(configuration);
    m_history.setConfiguration(configuration);
    update();
}

bool AttentionWindows::openHistory()
{
    if (!m_attention.isLoaded()) {
        return false;
    }
    m_view.open();
    m_history.show();
    return true;
}

void AttentionWindows::closeHistory()
{
    m_history.hide();
    m_view.close();
}

void AttentionWindows::update()
{
    using Mark = DisplayConfiguration::Mark;
    const bool isMarked = (m_view.isQuiet() && m_markMode != Mark::Never) ||
                          (m_view.missedCount() > 0 && m_markMode == Mark::Missed);
    if (!isMarked) {
        m_mark.hide();
    } else if (!m_mark.isShown()) {
        m_mark.show();
    }
    if (!m_attention.isLoaded() && m_history.isShown()) {
        closeHistory();
    }
}
