// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HistoryNodes.h"

#include <algorithm>
#include <limits>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Attention");

HistoryQuery queryOf(const TavoAttentionQuery &query)
{
    HistoryQuery read;
    read.before = std::max<qint64>(query.before(), 0);
    read.limit = query.limit() > 0 ? std::min(query.limit(), HistoryQuery::maxLimit) : read.limit;
    read.text = query.search();
    read.source = query.source();
    read.onlyMissed = query.missed();
    return read;
}

TavoAttentionState::Enum stateOf(const HistoryEntry &entry)
{
    return entry.state == HistoryEntry::State::Expired && entry.wasLeft
               ? TavoAttentionState::LeftOpen
               : TavoAttentionState::Enum(entry.state);
}

TavoAttentionRecord recordOf(const HistoryEntry &entry)
{
    return TavoAttentionRecord()
        .setNumber(entry.number)
        .setId(entry.id)
        .setTime(entry.time)
        .setEndTime(entry.endTime)
        .setSource(entry.source)
        .setApplication(entry.application)
        .setCategory(entry.category)
        .setPriority(TavoNotificationItemPriority::Enum(entry.priority))
        .setTitle(entry.title)
        .setText(entry.text)
        .setState(stateOf(entry))
        .setAction(entry.action);
}

TavoValue valueOf(const HistoryPage &page)
{
    TavoList<TavoAttentionRecord> records;
    for (const HistoryEntry &entry : page.entries) {
        records.append(recordOf(entry));
    }
    return TavoValue().setAttentionPage(TavoAttentionPage().setRecords(records).setNext(page.next));
}
} // namespace

HistoryNodes::HistoryNodes(CMNodes *nodes, History &history, const QString &file)
    : m_history(history)
    , m_file(file)
    , m_state(CMValueNode::create(nodes, TavoAttentionHistoryStatePath()))
    , m_missed(CMValueNode::create(nodes, TavoAttentionMissedPath()))
{
    if (file.isEmpty()) {
        m_reason =
            QStringLiteral("the configuration names no file; notifications are not remembered");
    }
    publishState();
    on_history_missedChanged(m_history.missed());
    CMActivateNode::create(nodes, TavoAttentionHistoryPath())
        ->setInvoke(this, &HistoryNodes::on_history_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes, TavoAttentionMarkSeenPath())
        ->setInvoke(this, &HistoryNodes::on_markSeen_activated, Qt::QueuedConnection);
    tavoConnect(&m_history, &History::changed, this, &HistoryNodes::on_history_changed);
    tavoConnect(&m_history, &History::missedChanged, this, &HistoryNodes::on_history_missedChanged);
    tavoConnect(&m_history, &History::failed, this, &HistoryNodes::on_history_failed);
    tavoConnect(&m_history, &History::recovered, this, &HistoryNodes::on_history_recovered);
    tavoConnect(&m_history, &History::damaged, this, &HistoryNodes::on_history_damaged);
}

void HistoryNodes::on_history_activated(const CMSetDataRequest &request)
{
    const auto query = TavoValue(request.value().toHash()).attentionQuery();
    m_history.page(queryOf(query), [reply = request.reply()](const Result<HistoryPage> &result) {
        if (const auto *failure = std::get_if<Failure>(&result)) {
            reply.setError(CMError(QStringLiteral("Attention"), failure->reason));
        } else {
            reply.setValue(valueOf(std::get<HistoryPage>(result)).__variant());
        }
    });
}

void HistoryNodes::on_markSeen_activated(const CMSetDataRequest &request)
{
    const auto query = TavoValue(request.value().toHash()).attentionQuery();
    m_history.markSeen(query.before() > 0 ? query.before() - 1 : std::numeric_limits<qint64>::max(),
                       query.from());
    request.reply().setValue(QVariant());
}

void HistoryNodes::on_history_changed()
{
    ++m_changes;
    publishState();
}

void HistoryNodes::on_history_missedChanged(int missed)
{
    m_missed->setValue(TavoValue().setInt_(missed));
}

void HistoryNodes::on_history_failed(const QString &reason)
{
    LOG4CPLUS_ERROR(logger, reason.toStdString());
    m_reason = reason;
    publishState();
}

void HistoryNodes::on_history_recovered(int lost)
{
    LOG4CPLUS_INFO(logger, "Notifications are remembered again; lost: " << lost);
    m_reason.clear();
    publishState();
}

void HistoryNodes::on_history_damaged(const QString &reason)
{
    LOG4CPLUS_ERROR(logger, reason);
}

void HistoryNodes::publishState()
{
    m_state->setValue(TavoValue().setAttentionHistory(TavoAttentionHistory()
                                                          .setKept(m_reason.isEmpty())
                                                          .setFile(m_file)
                                                          .setReason(m_reason)
                                                          .setChanges(m_changes)));
}
