// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationDisplay.h"

#include <QScopedValueRollback>

#include <algorithm>
#include <functional>

static log4cplus::Logger logger = log4cplus::Logger::getInstance("Notifications");

namespace {
/// The queue's copy of a message: without the texts, which the node has, and with the node's path
/// object instead of a text. This saves 320 bytes for each open message.
TavoNotificationDisplayItem queuedMessage(const TavoNotificationDisplayItem &item,
                                          const CMPath &node)
{
    QVariantHash fields = item.fields();
    fields.remove(QStringLiteral("title"));
    fields.remove(QStringLiteral("message"));
    fields.insert(QStringLiteral("path"), QVariant::fromValue(node));
    return fields;
}
} // namespace

NotificationDisplay::NotificationDisplay(CMNodes *nodes, QObject *parent)
    : QObject(parent)
    , m_closeTimer(this)
    , m_nodes(nodes)
    , m_status(nodes)
{
    TAVO_SCOPE(logger, TRACE, "");
    m_queueNode = CMListRowsNode::create(m_nodes, TavoNotificationDisplayQueuePath());
    m_queueNode->setTitle("List of messages");
    m_closeTimer.setSingleShot(true);
    // A coarse timer is up to 5 % early or late.
    m_closeTimer.setTimerType(Qt::PreciseTimer);
    tavoConnect(&m_closeTimer, &QTimer::timeout, this, &NotificationDisplay::on_closeTimer_timeout);
}

bool NotificationDisplay::enqueue(TavoNotificationDisplayItem *item)
{
    TAVO_SCOPE(logger, TRACE, "");
    const bool hasMessage = !item->message().isEmpty();
    if (item->isEmpty() || (!hasMessage && item->path().isEmpty())) {
        LOG4CPLUS_ERROR(logger, "Dropping empty notification");
        return false;
    }
    TavoNotificationDisplayItem queued = *item;
    if (hasMessage) {
        setPathToNotification(&queued);
    }
    const CMPath path = queued.path();
    if (hasMessage) {
        item->setPath(path);
    }
    const int position = queuePosition(item->priority());
    if (position == 0 && !m_queue.isEmpty()) {
        preemptHead();
    }
    const DisplayRanks::Rank rank{item->priority(), m_arrivals++};
    m_queue.insert(position, queued);
    m_ranks.insert(rank);
    m_ranksOfPaths.insert(path, rank);
    Q_ASSERT(m_ranksOfPaths.size() == m_ranks.size());
    if (position == 0) {
        startTimer();
    }
    m_queueNode->rowsInsert(position, path);
    CMRoot()->connectRowsChange(path, this, &NotificationDisplay::on_subscribe_rowsChanged,
                                Qt::AutoConnection);
    if (position == 0) {
        reportHead();
    } else {
        m_status.setWaiting(m_queue.size() - 1);
    }
    return true;
}

int NotificationDisplay::queuePosition(TavoNotificationItemPriority::Enum priority) const
{
    TAVO_SCOPE(logger, TRACE, "");
    // The next arrival comes after all others of the same priority.
    return m_ranks.position({priority, m_arrivals});
}

NotificationDisplay::Positions NotificationDisplay::positionsOf(const CMPath &path) const
{
    Positions positions;
    for (auto rank = m_ranksOfPaths.constFind(path);
         rank != m_ranksOfPaths.constEnd() && rank.key() == path; ++rank) {
        positions.append(m_ranks.position(*rank));
    }
    std::sort(positions.begin(), positions.end(), std::greater<>());
    return positions;
}

void NotificationDisplay::preemptHead()
{
    const int timeout = m_queue.constFirst().timeout();
    if (timeout <= 0) {
        return;
    }
    const qint64 elapsed = m_shownTimer.elapsed();
    if (timeout > int(elapsed)) {
        const int remaining = int(timeout - elapsed);
        const quint64 arrival = m_ranks.at(0).arrival;
        if (!m_wholeTimeouts.contains(arrival)) {
            m_wholeTimeouts.insert(arrival, timeout);
        }
        m_queue.first().setTimeout(remaining);
        LOG4CPLUS_DEBUG(logger, "Pausing current item, remaining time is [ms] " << remaining);
    } else {
        LOG4CPLUS_WARN(logger, "The item should have been expired, elapsed: "
                                   << elapsed << " item length " << timeout << " , removing");
        const QScopedValueRollback end(m_end, TavoNotificationDisplayEnd::Overtaken);
        removeNotificationItem(0);
    }
    m_closeTimer.stop();
}

void NotificationDisplay::startTimer()
{
    TAVO_SCOPE(logger, TRACE, "");
    if (m_queue.isEmpty()) {
        return;
    }
    const int timeout = m_queue.constFirst().timeout();
    if (timeout < 1) {
        return;
    }
    m_closeTimer.setInterval(timeout);
    m_closeTimer.start();
    m_shownTimer.start();
}

void NotificationDisplay::on_closeTimer_timeout()
{
    TAVO_SCOPE(logger, TRACE, "");
    {
        const QScopedValueRollback end(m_end, TavoNotificationDisplayEnd::Expired);
        removeNotificationItem(0);
    }
    if (m_queueNode->rowsSize() > 0) {
        startTimer();
    }
    reportHead();
}

void NotificationDisplay::reportHead()
{
    if (m_queue.isEmpty()) {
        m_status.clearHead();
        return;
    }
    const TavoNotificationDisplayItem &head = m_queue.constFirst();
    const int wholeTimeout = m_wholeTimeouts.value(m_ranks.at(0).arrival, head.timeout());
    m_status.setHead(head, wholeTimeout, m_queue.size() - 1);
}

void NotificationDisplay::setPathToNotification(TavoNotificationDisplayItem *item)
{
    TAVO_SCOPE(logger, TRACE, "");
    // Shared by all messages.
    static const auto rowsRoles = TavoRowsRoles(TavoHash()).setType({TavoRowsRolesType::Title});
    const QString id = tavoGenerateUuid();
    CMListRowsNode *node =
        CMListRowsNode::create(m_nodes, TavoNotificationDisplaySimpleMessageNodePath() + id);
    node->setRowsRoles(rowsRoles);
    node->rowsAppend(TavoRoles(TavoHash()).setType(TavoRolesType::Text).setTitle(item->message()));
    const TrString title = item->title();
    node->setTitle(title.isEmpty() ? TAVO_TR("Message") : title);
    *item = queuedMessage(*item, node->path());
    m_messageNodes.insert(id, node);
    LOG4CPLUS_DEBUG(logger, "Node created with id " << id);
}

bool NotificationDisplay::removeNotificationItem(int index)
{
    TAVO_SCOPE(logger, TRACE,
               "queue size: " << m_queue.size() << " notifs: " << m_queueNode->rowsSize()
                              << " index " << index);
    if (index >= m_queue.size() || index >= m_queueNode->rowsSize()) {
        LOG4CPLUS_WARN(logger, "Item index out of bounds (cannot remove) " << index);
        return false;
    }
    const TavoNotificationDisplayItem item = m_queue.at(index);
    const CMPath path = item.path();
    CMRoot()->disconnectRowsChange(path, this, &NotificationDisplay::on_subscribe_rowsChanged);
    m_queueNode->rowsRemoveAt(index);
    // The key of m_messageNodes is the generated identifier, not the notification's id. So a node
    // stays, for clients that still read it, until a notification is closed whose id is that
    // identifier.
    const QString id = item.id();
    if (!id.isEmpty() && m_messageNodes.contains(id)) {
        m_messageNodes.take(id)->dispose();
    }
    if (index < m_queue.size()) {
        m_queue.removeAt(index);
        forgetRank(path, m_ranks.takeAt(index));
    }
    const bool isShown = index == 0 && m_shownTimer.isValid();
    m_status.reportEnd(item, m_end, isShown ? m_shownTimer.elapsed() : 0);
    TAVO_LEAVE(TRACE, "queue: " << m_queue.size());
    return true;
}

void NotificationDisplay::forgetRank(const CMPath &path, const DisplayRanks::Rank &rank)
{
    const auto entry = m_ranksOfPaths.find(path, rank);
    if (entry != m_ranksOfPaths.end()) {
        m_ranksOfPaths.erase(entry);
    }
    m_wholeTimeouts.remove(rank.arrival);
    // Frees the memory after a burst.
    constexpr int minCapacityToSqueeze = 1024;
    if (m_ranksOfPaths.capacity() > minCapacityToSqueeze &&
        m_ranksOfPaths.size() < m_ranksOfPaths.capacity() / 4) {
        m_ranksOfPaths.squeeze();
    }
}

bool NotificationDisplay::cancel(const CMPath &path)
{
    TAVO_SCOPE(logger, TRACE, path);
    if (m_queue.isEmpty()) {
        LOG4CPLUS_WARN(logger, "Called cancel display notification but queue is empty");
        return false;
    }
    Q_ASSERT(m_ranks.size() == m_queue.size());
    // From the back, so that removals do not change the positions still to come.
    const Positions positions = positionsOf(path);
    const QVariant row = path.toQVariant();
    // All at once: removing them one by one would search the rest each time.
    m_ranksOfPaths.remove(path);
    for (auto position = positions.begin(); position != positions.end(); ++position) {
        if (m_queueNode->getRow(*position) != row) {
            LOG4CPLUS_FATAL(logger, "Notification with selected path was not found in queue");
            std::for_each(position, positions.end(), [this, &path](int left) {
                m_ranksOfPaths.insert(path, m_ranks.at(left));
            });
            return false;
        }
        removeNotificationItem(*position);
        if (*position == 0) {
            m_closeTimer.stop();
            startTimer();
            reportHead();
        } else {
            m_status.setWaiting(m_queue.size() - 1);
        }
    }
    Q_ASSERT(m_ranksOfPaths.size() == m_ranks.size());
    return !positions.isEmpty();
}

void NotificationDisplay::on_subscribe_rowsChanged(const CMPath &path, const QStringList &changes,
                                                   int /*first*/, int /*count*/)
{
    TAVO_SCOPE(logger, TRACE,
               "Path: " << path << ", changes: (" << changes.join(QStringLiteral(", ")) << ')');
    if (changes.contains(CMSubscribe::RowsChangeClose())) {
        LOG4CPLUS_DEBUG(logger, "RowsChangeClose for " << path << " removing notification");
        const QScopedValueRollback end(m_end, TavoNotificationDisplayEnd::Closed);
        cancel(path);
    }
}
