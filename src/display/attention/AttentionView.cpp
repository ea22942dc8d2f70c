// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/AttentionView.h"

#include <core/base/connect.h>

#include <QDateTime>
#include <QGuiApplication>
#include <QLocale>

#include <algorithm>
#include <utility>

AttentionView::AttentionView(HostAttention &attention, QObject *parent)
    : QObject(parent)
    , m_attention(attention)
    , m_history(attention)
{
    tavoConnect(&attention, &HostAttention::changed, this, &AttentionView::changed);
    tavoConnect(&m_history, &HistoryModel::changed, this, &AttentionView::changed);
}

void AttentionView::setConfiguration(const DisplayConfiguration &configuration)
{
    m_configuration = configuration;
    Q_EMIT changed();
}

bool AttentionView::isMirrored() const
{
    return QGuiApplication::layoutDirection() == Qt::RightToLeft;
}

Palette AttentionView::palette() const
{
    return Palette::find(m_configuration.theme, TavoNotificationItemPriority::Normal);
}

QString AttentionView::markText() const
{
    QStringList parts;
    if (isQuiet()) {
        const qint64 until = m_attention.doNotDisturb().until();
        parts << (until > 0 ? tr("Do not disturb until %1")
                                  .arg(HistoryModel::timeText(until, QDateTime::currentDateTime()))
                            : tr("Do not disturb"));
    }
    if (missedCount() > 0) {
        parts << missedText();
    }
    return parts.join(QStringLiteral(". "));
}

QString AttentionView::titleText() const
{
    return tr("History");
}

QString AttentionView::closeText() const
{
    return tr("Close");
}

QString AttentionView::allText() const
{
    return tr("All", "notifications of the past");
}

QString AttentionView::missedText() const
{
    return missedCount() > 0
               ? tr("Missed: %1", "how many notifications").arg(QLocale().toString(missedCount()))
               : tr("Missed", "notifications");
}

QString AttentionView::quietText() const
{
    return tr("Do not disturb");
}

QString AttentionView::emptyText() const
{
    if (m_history.count() > 0 || m_history.isReading()) {
        return {};
    }
    if (!m_history.failure().isEmpty()) {
        return tr("The history can't be read: %1").arg(m_history.failure());
    }
    return m_isOnlyMissed ? tr("Nothing was missed.") : tr("Nothing has come yet.");
}

void AttentionView::open()
{
    m_attention.followHistory(true); // before it is read, so that no change is missed
    m_history.reload(m_isOnlyMissed);
}

void AttentionView::close()
{
    for (const Range &shown : std::exchange(m_shown, {})) {
        if (missedCount() > 0) {
            m_attention.markSeen(shown.first, shown.last);
        }
    }
    m_attention.followHistory(false);
    m_history.clear();
    m_isOnlyMissed = false;
}

void AttentionView::setOnlyMissed(bool isOnlyMissed)
{
    m_isOnlyMissed = isOnlyMissed;
    open();
}

void AttentionView::noteShown(int first, int last)
{
    if (first < 0 || last < first || last >= m_history.count()) {
        return;
    }
    Range shown{m_history.numberAt(last), m_history.numberAt(first)};
    // While a person scrolls, what is seen overlaps with what was seen before.
    const auto isSeparate = [&shown](const Range &other) {
        return other.last < shown.first || other.first > shown.last;
    };
    const auto overlapping = std::stable_partition(m_shown.begin(), m_shown.end(), isSeparate);
    std::for_each(overlapping, m_shown.end(), [&shown](const Range &other) {
        shown.first = std::min(shown.first, other.first);
        shown.last = std::max(shown.last, other.last);
    });
    m_shown.erase(overlapping, m_shown.end());
    m_shown.append(shown);
}

void AttentionView::toggleQuiet()
{
    m_attention.setDoNotDisturb(!isQuiet());
}
