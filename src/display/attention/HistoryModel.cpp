// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/HistoryModel.h"

#include "display/text/ShownText.h"

#include <QDateTime>
#include <QLocale>

namespace {
constexpr int pageSize = 30;

bool isMissed(TavoAttentionState::Enum state)
{
    return state == TavoAttentionState::Expired || state == TavoAttentionState::Silenced;
}
} // namespace

HistoryModel::HistoryModel(HostAttention &attention, QObject *parent)
    : QAbstractListModel(parent)
    , m_attention(attention)
{
}

void HistoryModel::reload(bool isOnlyMissed)
{
    clear();
    m_query = TavoAttentionQuery().setLimit(pageSize).setMissed(isOnlyMissed);
    m_hasMore = true;
    fetchMore({});
}

void HistoryModel::clear()
{
    ++m_reading;
    beginResetModel();
    m_records.clear();
    m_hasMore = false;
    m_isReading = false;
    m_failure.clear();
    endResetModel();
    Q_EMIT changed();
}

int HistoryModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_records.size();
}

QVariant HistoryModel::data(const QModelIndex &index, int role) const
{
    const TavoAttentionRecord &record = m_records.at(index.row());
    switch (role) {
    case TitleRole: {
        const QString title = shownLine(record.title());
        return title.isEmpty() && record.text().isEmpty() ? tr("No text was kept") : title;
    }
    case TextRole:
        return shownText(record.text());
    case SenderRole:
        return shownLine(record.application().isEmpty() ? record.source() : record.application());
    case TimeRole:
        return timeText(record.time(), QDateTime::currentDateTime());
    case OutcomeRole:
        return stateText(record.state());
    case MissedRole:
        return isMissed(record.state());
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryModel::roleNames() const
{
    return {{TitleRole, "title"}, {TextRole, "body"},       {SenderRole, "sender"},
            {TimeRole, "time"},   {OutcomeRole, "outcome"}, {MissedRole, "isMissed"}};
}

bool HistoryModel::canFetchMore(const QModelIndex & /*parent*/) const
{
    return m_hasMore && !m_isReading;
}

void HistoryModel::fetchMore(const QModelIndex & /*parent*/)
{
    m_isReading = true;
    m_attention.readPage(m_query,
                         [this, reading = m_reading](const Result<TavoAttentionPage> &page) {
                             if (reading != m_reading) {
                                 return;
                             }
                             m_isReading = false;
                             if (const auto *failure = std::get_if<Failure>(&page)) {
                                 m_hasMore = false;
                                 m_failure = shownLine(failure->reason);
                                 Q_EMIT changed();
                             } else {
                                 append(std::get<TavoAttentionPage>(page));
                             }
                         });
    Q_EMIT changed();
}

void HistoryModel::append(const TavoAttentionPage &page)
{
    m_hasMore = page.next() > 0;
    m_query.setBefore(page.next());
    const auto records = page.records();
    if (records.isEmpty() && m_hasMore) {
        fetchMore({});
        return;
    }
    if (!records.isEmpty()) {
        beginInsertRows({}, m_records.size(), m_records.size() + records.size() - 1);
        for (int i = 0; i < records.size(); ++i) {
            m_records.append(records.at(i));
        }
        endInsertRows();
    }
    Q_EMIT changed();
}

QString HistoryModel::timeText(qint64 time, const QDateTime &now)
{
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(time);
    return local.date() == now.date() ? QLocale().toString(local.time(), QLocale::ShortFormat)
                                      : QLocale().toString(local, QLocale::ShortFormat);
}

QString HistoryModel::stateText(TavoAttentionState::Enum state)
{
    switch (state) {
    case TavoAttentionState::Shown:
        return tr("open", "a notification");
    case TavoAttentionState::Seen:
        return tr("seen", "a notification");
    case TavoAttentionState::Dismissed:
        return tr("closed", "a notification");
    case TavoAttentionState::ActedOn:
        return tr("acted on", "a notification");
    case TavoAttentionState::Expired:
        return tr("missed", "a notification");
    case TavoAttentionState::Silenced:
        return tr("missed, do not disturb", "a notification");
    case TavoAttentionState::Refused:
        return tr("not shown", "a notification");
    default:
        return {};
    }
}
