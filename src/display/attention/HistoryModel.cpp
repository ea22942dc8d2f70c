// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "display/attention/HistoryModel.h"

#include "display/text/ShownText.h"
#include <base/MissedState.h>
#include <core/base/connect.h>

#include <QDateTime>
#include <QLocale>

namespace {
constexpr int pageSize = 30;
constexpr int updateDelayMs = 250;
} // namespace

HistoryModel::HistoryModel(HostAttention &attention, QObject *parent)
    : QAbstractListModel(parent)
    , m_attention(attention)
{
    m_updateTimer.setSingleShot(true);
    m_updateTimer.setInterval(updateDelayMs);
    tavoConnect(&m_updateTimer, &QTimer::timeout, this, &HistoryModel::on_updateTimer_timeout);
    tavoConnect(&attention, &HostAttention::historyChanged, this,
                &HistoryModel::on_attention_historyChanged);
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
    m_isUpdating = false;
    m_updateTimer.stop();
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
    case NumberRole:
        return record.number();
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
    return {{NumberRole, "number"},  {TitleRole, "title"}, {TextRole, "body"},
            {SenderRole, "sender"},  {TimeRole, "time"},   {OutcomeRole, "outcome"},
            {MissedRole, "isMissed"}};
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

void HistoryModel::on_attention_historyChanged()
{
    if (!m_updateTimer.isActive()) {
        m_updateTimer.start();
    }
}

void HistoryModel::on_updateTimer_timeout()
{
    if (m_isUpdating) {
        m_updateTimer.start();
        return;
    }
    m_isUpdating = true;
    const auto query = TavoAttentionQuery()
                           .setLimit(qBound(pageSize, m_records.size(), maxUpdated))
                           .setMissed(m_query.missed());
    m_attention.readPage(query, [this, reading = m_reading](const Result<TavoAttentionPage> &page) {
        if (reading != m_reading) {
            return;
        }
        m_isUpdating = false;
        if (const auto *read = std::get_if<TavoAttentionPage>(&page)) {
            merge(*read);
        }
    });
}

/// Takes the newest rows from the page. What is older than the rows that have been read is left to fetchMore().
void HistoryModel::merge(const TavoAttentionPage &page)
{
    if (m_records.isEmpty() || page.next() > m_records.first().number()) {
        clear();
        append(page);
        return;
    }
    const qint64 oldest = qMax(page.next(), m_hasMore ? m_query.before() : 0);
    const auto records = page.records();
    int row = 0;
    for (int i = 0; i < records.size() && records.at(i).number() >= oldest; ++i, ++row) {
        const TavoAttentionRecord record = records.at(i);
        while (row < m_records.size() && m_records[row].number() > record.number()) {
            remove(row);
        }
        if (row == m_records.size() || m_records[row].number() < record.number()) {
            insert(row, record);
        } else if (!(m_records[row] == record)) {
            m_records[row] = record;
            Q_EMIT dataChanged(index(row), index(row));
        }
    }
    while (row < m_records.size() && m_records[row].number() >= oldest) {
        remove(row);
    }
    if (m_records.isEmpty() && canFetchMore({})) {
        fetchMore({});
    }
    Q_EMIT changed();
}

void HistoryModel::insert(int row, const TavoAttentionRecord &record)
{
    beginInsertRows({}, row, row);
    m_records.insert(row, record);
    endInsertRows();
}

void HistoryModel::remove(int row)
{
    beginRemoveRows({}, row, row);
    m_records.remove(row);
    endRemoveRows();
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
    case TavoAttentionState::LeftOpen:
        return tr("missed", "a notification");
    case TavoAttentionState::Silenced:
        return tr("missed, do not disturb", "a notification");
    case TavoAttentionState::Refused:
        return tr("not shown", "a notification");
    default:
        return {};
    }
}
