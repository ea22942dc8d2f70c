// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "History.h"

#include "base/StateFolder.h"
#include "core/base/connect.h"
#include "HistoryQueue.h"
#include "HistoryWriter.h"

namespace {
/// Never cuts a character in two.
void cut(QString &string, int maxLength)
{
    if (string.size() > maxLength) {
        const bool isPair = string.at(maxLength - 1).isHighSurrogate();
        string.truncate(isPair ? maxLength - 1 : maxLength);
    }
}

/// Leaves of an entry what is kept.
void reduce(HistoryEntry &entry)
{
    if (entry.isPrivate) {
        entry.title.clear();
        entry.text.clear();
    }
    cut(entry.title, History::maxTitleLength);
    cut(entry.text, History::maxTextLength);
    for (QString *name : {&entry.id, &entry.user, &entry.source, &entry.application,
                          &entry.category, &entry.group, &entry.action}) {
        cut(*name, History::maxNameLength);
    }
}
} // namespace

History::History(const HistorySettings &settings, QObject *parent)
    : QObject(parent)
    , m_queue(std::make_unique<HistoryQueue>())
{
    if (settings.file.isEmpty()) {
        return;
    }
    m_writer = std::make_unique<HistoryWriter>(settings, *m_queue);
    const HistoryWriter *writer = m_writer.get();
    tavoConnect(writer, &HistoryWriter::changed, this, &History::changed);
    tavoConnect(writer, &HistoryWriter::missedChanged, this, &History::on_writer_missedChanged);
    tavoConnect(writer, &HistoryWriter::leftOpen, this, &History::leftOpen);
    tavoConnect(writer, &HistoryWriter::failed, this, &History::failed);
    tavoConnect(writer, &HistoryWriter::recovered, this, &History::recovered);
    tavoConnect(writer, &HistoryWriter::damaged, this, &History::damaged);
    m_writer->start();
}

History::~History() = default;

qint64 History::add(HistoryEntry entry)
{
    if (!m_writer) {
        return 0;
    }
    reduce(entry);
    return m_queue->add(std::move(entry));
}

void History::change(qint64 number, HistoryEntry::State state, const QString &action,
                     qint64 endTime, const QString &user)
{
    if (m_writer) {
        QString key = action;
        cut(key, maxNameLength);
        m_queue->append(HistoryChange{number, state, key, endTime, user});
    }
}

void History::replace(HistoryEntry entry)
{
    if (m_writer) {
        reduce(entry);
        m_queue->append(HistoryReplacement{std::move(entry)});
    }
}

void History::markSeen(qint64 upTo, qint64 from)
{
    if (m_writer) {
        m_queue->append(HistorySeen{upTo, from});
    }
}

void History::page(const HistoryQuery &query, PageReceiver receiver)
{
    if (m_writer) {
        m_queue->append(HistoryQueue::Request{query, std::move(receiver)});
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [receiver = std::move(receiver)] {
            receiver(Failure{QStringLiteral("no history is kept")});
        },
        Qt::QueuedConnection);
}

QString History::defaultFile()
{
    return stateFolder() + QLatin1String("/history.db");
}

void History::on_writer_missedChanged(int missed)
{
    m_missed = missed;
    Q_EMIT missedChanged(missed);
}
