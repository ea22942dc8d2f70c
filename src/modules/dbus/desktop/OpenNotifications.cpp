// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "OpenNotifications.h"

#include <limits>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// A notification that is removed at most this long before its timeout counts as expired: its time on
/// display is known from the display's changes, which arrive with some delay.
constexpr int expirySlackMs = 500;

/// Tokens are sent on to the client, whose unread messages are limited.
constexpr int maxTokenLength = 1000;

void askDisplayToClose(const CMPath &path)
{
    // The reply is ignored: if the notification has gone already, there is nothing to close.
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path),
                     CMReply<QVariant>());
}
} // namespace

OpenNotifications::OpenNotifications(CMNodes *nodes)
    : m_nodes(nodes)
{
    const CMPath queue = TavoNotificationDisplayQueuePath();
    // Subscribes before the first notification is opened, so that the place of each is known.
    CMRoot()->connectRowsChange(queue, this, &OpenNotifications::on_queue_rowsChanged);
    CMRoot()->connectNodeChange(queue, this, &OpenNotifications::on_queue_nodeChanged);
    m_headTimer.start();
}

OpenNotifications::~OpenNotifications() = default;

quint32 OpenNotifications::freeId()
{
    return m_ids.take([this](quint32 id) { return isOpen(id); });
}

CMError OpenNotifications::open(quint32 id, const DesktopNotification &notification)
{
    Q_ASSERT(id != 0 && !isOpen(id));
    const auto entry = m_entries.insert(id, Entry{NotificationNode(m_nodes, id)});
    fill(*entry, notification);
    CMRoot()->connectRowsChange(entry->node.path(), this,
                                &OpenNotifications::on_notification_rowsChanged);
    const CMReply<QVariant> reply = show(id, *entry);
    CMError error = reply.isFinished() ? reply.error() : CMError();
    if (error.isError()) {
        withdraw(entry);
    }
    return error;
}

void OpenNotifications::replace(quint32 id, const DesktopNotification &notification)
{
    const auto entry = m_entries.find(id);
    Q_ASSERT(entry != m_entries.end());
    const bool isQueuedAnew =
        entry->priority != notification.priority || entry->timeout != notification.timeout;
    fill(*entry, notification);
    if (isQueuedAnew) {
        showAnew(id, *entry);
    }
}

void OpenNotifications::fill(Entry &entry, const DesktopNotification &notification)
{
    entry.priority = notification.priority;
    entry.timeout = notification.timeout;
    entry.isResident = notification.isResident;
    entry.node.show(notification, [this](CMActivateNode *action) {
        action->setInvoke(this, &OpenNotifications::on_action_activated, Qt::QueuedConnection);
    });
}

CMReply<QVariant> OpenNotifications::show(quint32 id, Entry &entry)
{
    const DisplayOrder::Opening opening{id, ++m_numbers};
    entry.number = opening.number;
    entry.shownMs = 0;
    entry.isAwaited = true;
    entry.isStale = false;
    const auto item = TavoNotificationDisplayItem()
                          .setPath(entry.node.path())
                          .setPriority(entry.priority)
                          .setTimeout(entry.timeout);
    const CMReply<QVariant> reply;
    // The watcher is added before the request is sent, and its call is queued. So the reply arrives right
    // after the report of the inserted row, and tells whose row it is.
    reply.addWatcher(
        this, [this, opening](const CMVoidReply &answer) { on_open_finished(opening, answer); },
        Qt::QueuedConnection);
    return CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                            TavoValue().setNotificationDisplayItem(item), reply);
}

void OpenNotifications::showAnew(quint32 id, Entry &entry)
{
    if (entry.isAwaited) {
        // One request at a time: they must not pile up when a client changes its notification
        // faster than the display replies.
        entry.isStale = true;
        return;
    }
    askDisplayToClose(entry.node.path());
    show(id, entry);
}

void OpenNotifications::on_open_finished(const DisplayOrder::Opening &opening,
                                         const CMVoidReply &reply)
{
    const auto entry = find(opening);
    if (reply.error().isError()) {
        if (entry != m_entries.end()) {
            LOG4CPLUS_WARN(logger, "Notification " << opening.id << " is not shown: "
                                                   << reply.error().message().toString());
            remove(entry, Reason::Undefined);
        }
        return;
    }
    m_order.nameLast(opening);
    if (entry == m_entries.end()) {
        return;
    }
    entry->isAwaited = false;
    if (entry->isStale) {
        showAnew(opening.id, *entry);
    }
}

bool OpenNotifications::close(quint32 id, Reason reason)
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end()) {
        return false;
    }
    askDisplayToClose(entry->node.path());
    remove(entry, reason);
    return true;
}

void OpenNotifications::giveWay(quint32 id)
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end()) {
        return;
    }
    entry->priority = LeftMessages::below(entry->priority);
    entry->timeout = remainingMs(*entry);
    showAnew(id, *entry);
}

void OpenNotifications::closeAll(Reason reason)
{
    const QList<quint32> ids = m_entries.keys();
    for (const quint32 id : ids) {
        close(id, reason);
    }
}

void OpenNotifications::takeCancel(const CMPath &path)
{
    const auto entry = m_entries.find(NotificationNode::idOf(path));
    if (entry != m_entries.end() && entry->node.path() == path) {
        remove(entry, Reason::Closed);
    }
}

void OpenNotifications::remove(Entries::iterator entry, Reason reason)
{
    const quint32 id = entry.key();
    withdraw(entry);
    Q_EMIT closed(id, reason);
}

void OpenNotifications::withdraw(Entries::iterator entry)
{
    CMRoot()->disconnectRowsChange(entry->node.path(), this,
                                   &OpenNotifications::on_notification_rowsChanged);
    entry->node.dispose();
    m_entries.erase(entry);
}

OpenNotifications::Entries::iterator OpenNotifications::find(const DisplayOrder::Opening &opening)
{
    const auto entry = opening.isOurs() ? m_entries.find(opening.id) : m_entries.end();
    return entry != m_entries.end() && entry->number == opening.number ? entry : m_entries.end();
}

void OpenNotifications::on_queue_rowsChanged(const CMPath & /*path*/, const QStringList &changes,
                                             int first, int count)
{
    for (int i = 0; i < count && changes.contains(CMSubscribe::RowsChangeInserted()); ++i) {
        displayInserted(first + i);
    }
    for (int i = 0; i < count && changes.contains(CMSubscribe::RowsChangeRemoved()); ++i) {
        displayRemoved(first);
    }
}

void OpenNotifications::displayInserted(int index)
{
    if (index == 0) {
        const auto preempted = find(m_order.head());
        if (preempted != m_entries.end()) {
            preempted->shownMs += headMs();
        }
        m_headTimer.start();
    }
    m_order.insert(index);
}

void OpenNotifications::displayRemoved(int index)
{
    const auto entry = find(m_order.remove(index));
    const int shownMs = index == 0 ? headMs() : 0;
    if (index == 0) {
        m_headTimer.start();
    }
    if (entry == m_entries.end()) {
        return;
    }
    // Only the head expires, and only after its timeout.
    const bool isExpired = index == 0 && entry->timeout > 0 &&
                           qint64(entry->shownMs) + shownMs + expirySlackMs >= entry->timeout;
    remove(entry, isExpired ? Reason::Expired : Reason::Closed);
}

int OpenNotifications::remainingMs(const Entry &entry) const
{
    if (entry.timeout == 0) {
        return 0;
    }
    const int sinceShown = m_order.head().number == entry.number ? headMs() : 0;
    return int(qMax<qint64>(1, qint64(entry.timeout) - entry.shownMs - sinceShown));
}

int OpenNotifications::headMs() const
{
    return int(qMin<qint64>(m_headTimer.elapsed(), std::numeric_limits<int>::max() / 2));
}

void OpenNotifications::on_queue_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (published) {
        return;
    }
    m_order.clear();
    closeAll(Reason::Undefined);
}

void OpenNotifications::on_notification_rowsChanged(const CMPath &path, const QStringList &changes,
                                                    int /*first*/, int /*count*/)
{
    const auto entry = m_entries.find(NotificationNode::idOf(path));
    if (entry == m_entries.end() || !changes.contains(CMSubscribe::RowsChangeClose())) {
        return;
    }
    if (entry->isAwaited) {
        // The display may not have subscribed to the node yet.
        askDisplayToClose(path);
    }
    remove(entry, Reason::Dismissed);
}

void OpenNotifications::on_action_activated(const CMSetDataRequest &request)
{
    const quint32 id = NotificationNode::idOfAction(request.path());
    const auto entry = m_entries.find(id);
    const auto key = entry == m_entries.end() ? std::nullopt : entry->node.actionAt(request.path());
    if (!key) {
        request.reply().setError(CMError(QStringLiteral("Dbus"),
                                         TAVO_TR("The notification has no such action any more")));
        return;
    }
    const QVariant value = request.value();
    QString token = value.userType() == QMetaType::QString ? value.toString()
                                                           : TavoValue(value.toHash()).string_();
    if (token.size() > maxTokenLength) {
        token.clear();
    }
    request.reply().setValue(QVariant());
    const bool isResident = entry->isResident;
    Q_EMIT actionInvoked(id, *key, token);
    if (!isResident) {
        close(id, Reason::Dismissed);
    }
}
