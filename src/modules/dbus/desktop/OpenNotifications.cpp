// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "OpenNotifications.h"

#include <algorithm>

#include <QUrl>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// What is removed from the display so shortly before its time is over has expired: how long it was
/// shown is known from changes that come with some delay.
constexpr int expirySlackMs = 500;

const CMPath &notificationsPath()
{
    static const CMPath path(QStringLiteral("/dbus/notifications"));
    return path;
}

/// An action's key as one segment of a path, which an empty one couldn't be.
QString segmentOf(const QString &key)
{
    return key.isEmpty() ? QStringLiteral("%00")
                         : QString::fromLatin1(QUrl::toPercentEncoding(key));
}

template <typename Setter, typename Value>
void setIf(bool isSet, TavoRoles &row, Setter setter, const Value &value)
{
    if (isSet) {
        (row.*setter)(value);
    }
}

TavoRoles textRow(const DesktopNotification &notification)
{
    TavoRoles row;
    row.setType(TavoRolesType::Text).setTitle(notification.text);
    const auto set = [&row](TavoRoles &(TavoRoles::*setter)(const QString &),
                            const QString &value) { setIf(!value.isEmpty(), row, setter, value); };
    set(&TavoRoles::setApplication, notification.application);
    set(&TavoRoles::setDesktopEntry, notification.desktopEntry);
    set(&TavoRoles::setIcon, notification.icon);
    set(&TavoRoles::setCategory, notification.category);
    setIf(notification.isTransient, row, &TavoRoles::setTransient, true);
    return row;
}

void askDisplayToClose(const CMPath &path)
{
    // It may have gone already; then there is nothing to close, and nobody to tell.
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path),
                     CMReply<QVariant>());
}
} // namespace

OpenNotifications::OpenNotifications(CMNodes *nodes)
    : m_nodes(nodes)
{
    const CMPath queue = TavoNotificationDisplayQueuePath();
    // Before the first opening, so that the place of each is known.
    CMRoot()->connectRowsChange(queue, this, &OpenNotifications::on_queue_rowsChanged);
    CMRoot()->connectNodeChange(queue, this, &OpenNotifications::on_queue_nodeChanged);
    m_headTimer.start();
}

OpenNotifications::~OpenNotifications() = default;

CMPath OpenNotifications::pathOf(quint32 id)
{
    return notificationsPath() + QString::number(id);
}

quint32 OpenNotifications::freeId()
{
    return m_ids.take([this](quint32 id) { return isOpen(id); });
}

CMError OpenNotifications::open(quint32 id, const DesktopNotification &notification)
{
    Q_ASSERT(id != 0 && !isOpen(id));
    const auto entry = m_entries.insert(id, Entry());
    const CMPath path = pathOf(id);
    entry->node = CMListRowsNode::create(m_nodes, path);
    static const auto rowsRoles =
        TavoRowsRoles().setType({TavoRowsRolesType::Title, TavoRowsRolesType::Path});
    entry->node->setRowsRoles(rowsRoles);
    fill(*entry, id, notification);
    CMRoot()->connectRowsChange(path, this, &OpenNotifications::on_notification_rowsChanged);
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
    withdrawActions(*entry);
    fill(*entry, id, notification);
    if (isQueuedAnew) {
        showAnew(id, *entry);
    }
}

void OpenNotifications::fill(Entry &entry, quint32 id, const DesktopNotification &notification)
{
    entry.priority = notification.priority;
    entry.timeout = notification.timeout;
    entry.isResident = notification.isResident;
    entry.node->setTitle(notification.title);
    QVector<TavoRoles> rows = publishActions(entry, id, notification.actions);
    rows.prepend(textRow(notification));
    entry.node->setRows(rows);
}

QVector<TavoRoles>
OpenNotifications::publishActions(Entry &entry, quint32 id,
                                  const QVector<DesktopNotification::Action> &actions)
{
    QVector<TavoRoles> rows;
    for (const DesktopNotification::Action &action : actions) {
        const CMPath path = pathOf(id) + (QStringLiteral("actions/") + segmentOf(action.key));
        const auto hasKey = [&action](const Action &other) { return other.key == action.key; };
        if (std::any_of(entry.actions.constBegin(), entry.actions.constEnd(), hasKey)) {
            continue;
        }
        auto *node = CMActivateNode::create(m_nodes, path);
        node->setTitle(action.label);
        node->setInvoke(this, &OpenNotifications::on_action_activated, Qt::QueuedConnection);
        entry.actions.append({action.key, node});
        rows.append(
            TavoRoles().setType(TavoRolesType::Action).setTitle(action.label).setPath(path));
    }
    return rows;
}

void OpenNotifications::withdrawActions(Entry &entry)
{
    for (const Action &action : qAsConst(entry.actions)) {
        action.node->dispose();
    }
    entry.actions.clear();
}

CMReply<QVariant> OpenNotifications::show(quint32 id, Entry &entry)
{
    const DisplayOrder::Opening opening{id, ++m_numbers};
    entry.number = opening.number;
    entry.shownMs = 0;
    entry.isAwaited = true;
    entry.isStale = false;
    const auto item = TavoNotificationDisplayItem()
                          .setPath(entry.node->path())
                          .setPriority(entry.priority)
                          .setTimeout(entry.timeout);
    const CMReply<QVariant> reply;
    // Watched before it is sent and told through the queue of events: so the answer comes right
    // behind the report of the row that was inserted, and tells whose it is.
    reply.addWatcher(
        this, [this, opening](const CMVoidReply &answer) { on_open_finished(opening, answer); },
        Qt::QueuedConnection);
    return CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                            TavoValue().setNotificationDisplayItem(item), reply);
}

void OpenNotifications::showAnew(quint32 id, Entry &entry)
{
    if (entry.isAwaited) {
        // One request at a time, so that a client that changes its mind faster than the display
        // follows doesn't make them pile up.
        entry.isStale = true;
        return;
    }
    askDisplayToClose(entry.node->path());
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
    askDisplayToClose(entry->node->path());
    remove(entry, reason);
    return true;
}

void OpenNotifications::remove(Entries::iterator entry, Reason reason)
{
    const quint32 id = entry.key();
    withdraw(entry);
    Q_EMIT closed(id, reason);
}

void OpenNotifications::withdraw(Entries::iterator entry)
{
    CMRoot()->disconnectRowsChange(entry->node->path(), this,
                                   &OpenNotifications::on_notification_rowsChanged);
    withdrawActions(*entry);
    entry->node->dispose();
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
    // Only what is on display expires, and only when its time is over.
    const bool isExpired = index == 0 && entry->timeout > 0 &&
                           qint64(entry->shownMs) + shownMs + expirySlackMs >= entry->timeout;
    remove(entry, isExpired ? Reason::Expired : Reason::Closed);
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
    while (!m_entries.isEmpty()) {
        remove(m_entries.begin(), Reason::Undefined);
    }
}

void OpenNotifications::on_notification_rowsChanged(const CMPath &path, const QStringList &changes,
                                                    int /*first*/, int /*count*/)
{
    const auto entry = m_entries.find(path.name().toUInt());
    if (entry == m_entries.end() || !changes.contains(CMSubscribe::RowsChangeClose())) {
        return;
    }
    if (entry->isAwaited) {
        // The display may not have been listening.
        askDisplayToClose(path);
    }
    remove(entry, Reason::Dismissed);
}

void OpenNotifications::on_action_activated(const CMSetDataRequest &request)
{
    const CMPath path = request.path();
    const quint32 id = path.parent().parent().name().toUInt();
    const auto entry = m_entries.find(id);
    const auto isActivated = [&path](const Action &action) { return action.node->path() == path; };
    const auto actions = entry == m_entries.end() ? QVector<Action>() : entry->actions;
    const auto action = std::find_if(actions.begin(), actions.end(), isActivated);
    if (action == actions.end()) {
        request.reply().setError(CMError(QStringLiteral("Dbus"),
                                         TAVO_TR("The notification has no such action any more")));
        return;
    }
    const QVariant value = request.value();
    const QString token = value.userType() == QMetaType::QString
                              ? value.toString()
                              : TavoValue(value.toHash()).string_();
    request.reply().setValue(QVariant());
    const bool isResident = entry->isResident;
    Q_EMIT actionInvoked(id, action->key, token);
    if (!isResident) {
        close(id, Reason::Dismissed);
    }
}
