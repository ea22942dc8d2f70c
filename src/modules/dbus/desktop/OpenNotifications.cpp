// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "OpenNotifications.h"

#include <algorithm>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// Tokens are sent on to the client, whose unread messages are limited.
constexpr int maxTokenLength = 1000;

TavoAttentionEnd::Enum attentionEndFor(OpenNotifications::Reason reason, bool isAction)
{
    if (isAction) {
        return TavoAttentionEnd::ActedOn;
    }
    switch (reason) {
    case OpenNotifications::Reason::Dismissed:
        return TavoAttentionEnd::Dismissed;
    case OpenNotifications::Reason::Closed:
        return TavoAttentionEnd::Closed;
    case OpenNotifications::Reason::Expired:
    case OpenNotifications::Reason::Undefined:
        break;
    }
    return TavoAttentionEnd::Expired; // nobody has attended to it
}

AttentionItem attentionItemOf(const DesktopNotification &notification)
{
    AttentionItem item;
    item.title = notification.title;
    item.text = notification.text;
    item.application = notification.application;
    item.source = notification.desktopEntry;
    item.user = notification.user;
    item.category = notification.category;
    item.isTransient = notification.isTransient;
    return item;
}

bool isShownByAttention(const CMReply<QVariant> &reply)
{
    return attentionOutcomeIn(reply.value()).isShown;
}

OpenNotifications::Reason reasonFor(TavoAttentionEnd::Enum end)
{
    switch (end) {
    case TavoAttentionEnd::Expired:
        return OpenNotifications::Reason::Expired;
    case TavoAttentionEnd::Closed:
        return OpenNotifications::Reason::Closed;
    case TavoAttentionEnd::Dismissed:
    case TavoAttentionEnd::ActedOn:
        return OpenNotifications::Reason::Dismissed;
    case TavoAttentionEnd::Silenced:
    case TavoAttentionEnd::Failed:
    case TavoAttentionEnd::Unknown:
        break;
    }
    return OpenNotifications::Reason::Undefined;
}

OpenNotifications::Reason reasonFor(TavoNotificationDisplayEnd::Enum end)
{
    switch (end) {
    case TavoNotificationDisplayEnd::Expired:
    case TavoNotificationDisplayEnd::Overtaken:
        return OpenNotifications::Reason::Expired;
    case TavoNotificationDisplayEnd::Cancelled:
        return OpenNotifications::Reason::Closed;
    case TavoNotificationDisplayEnd::Closed:
        return OpenNotifications::Reason::Dismissed;
    case TavoNotificationDisplayEnd::Unknown:
        break;
    }
    return OpenNotifications::Reason::Undefined;
}
} // namespace

OpenNotifications::OpenNotifications(CMNodes *nodes)
    : m_nodes(nodes)
    , m_hasAttention(CMCatalog::entry(TavoAttentionNotifyPath()).has_value())
{
    registerAttentionTypes();
    CMRoot()->connectNodeChange(TavoAttentionNotifyPath(), this,
                                &OpenNotifications::on_attention_nodeChanged);
    CMRoot()->connectValueChange(TavoAttentionEndedPath(), this,
                                 &OpenNotifications::on_attention_ended);
    CMRoot()->connectValueChange(TavoNotificationDisplayEndedPath(), this,
                                 &OpenNotifications::on_display_ended);
    CMRoot()->connectNodeChange(TavoNotificationDisplayQueuePath(), this,
                                &OpenNotifications::on_queue_nodeChanged);
}

OpenNotifications::~OpenNotifications() = default;

quint32 OpenNotifications::freeId()
{
    return m_ids.take([this](quint32 id) { return isOpen(id); });
}

QString OpenNotifications::requestOf(quint32 id) const
{
    const auto entry = m_entries.find(id);
    return entry == m_entries.end() || !entry->isAttended ? QString() : entry->request;
}

CMError OpenNotifications::open(quint32 id, const DesktopNotification &notification, bool hasSound)
{
    Q_ASSERT(id != 0 && !isOpen(id));
    const auto entry = m_entries.insert(id, Entry{NotificationNode(m_nodes, id)});
    fill(id, *entry, notification);
    if (hasSound && entry->item) {
        entry->item->soundFollows = true;
    }
    CMRoot()->connectRowsChange(entry->node.path(), this,
                                &OpenNotifications::on_notification_rowsChanged);
    const CMReply<QVariant> reply = show(id, *entry);
    CMError error = reply.isFinished() ? reply.error() : CMError();
    if (error.isError()) {
        withdraw(entry);
        return error;
    }
    if (entry->item) {
        // Whatever shows it anew later comes without a sound.
        entry->item->soundFollows = false;
    }
    return error;
}

void OpenNotifications::replace(quint32 id, const DesktopNotification &notification)
{
    const auto entry = m_entries.find(id);
    Q_ASSERT(entry != m_entries.end());
    const bool isQueuedAnew =
        entry->priority != notification.priority || entry->timeout != notification.timeout;
    fill(id, *entry, notification);
    if (isQueuedAnew) {
        showAnew(id, *entry);
    } else {
        tellChange(id, *entry);
    }
}

void OpenNotifications::fill(quint32 id, Entry &entry, const DesktopNotification &notification)
{
    entry.state = ++m_states;
    entry.priority = notification.priority;
    entry.timeout = notification.timeout;
    entry.isResident = notification.isResident;
    entry.item.reset();
    if (m_hasAttention) {
        entry.item = std::make_shared<AttentionItem>(attentionItemOf(notification));
    }
    entry.node.show(notification, [this](CMActivateNode *action) {
        action->setInvoke(this, &OpenNotifications::on_action_activated, Qt::QueuedConnection);
    });
    if (notification.image) {
        addImage(id, entry, *notification.image);
    }
}

void OpenNotifications::addImage(quint32 id, const Entry &entry, const ImageData &image)
{
    const auto add = [this, id, state = entry.state](const TavoImage &scaled) {
        const auto shown = m_entries.find(id);
        if (shown != m_entries.end() && shown->state == state) {
            shown->node.setImage(scaled);
        }
    };
    if (!m_scaler.scale(image, add)) {
        LOG4CPLUS_WARN(logger, "Notification " << id
                                               << " is shown without its picture: too many large"
                                                  " pictures are being read");
    }
}

CMReply<QVariant> OpenNotifications::show(quint32 id, Entry &entry)
{
    // No request of another has this id, even if it shows the same node: ClientMessages chooses the
    // ids of those of clients.
    entry.request = m_requestPrefix + QString::number(++m_requests);
    entry.isAwaited = true;
    entry.isStale = false;
    entry.givesWay = false;
    CMReply<QVariant> reply = requestDisplay(id, entry);
    if (reply.isFinished() && entry.isAttended && isShownByAttention(reply)) {
        entry.isAwaited = false;
        return reply;
    }
    reply.addWatcher(
        this,
        [this, id, request = entry.request, reply](const CMVoidReply &) {
            on_open_finished(id, request, reply);
        },
        Qt::QueuedConnection);
    return reply;
}

const AttentionItem &OpenNotifications::updatedItem(Entry &entry)
{
    entry.item->id = entry.request;
    entry.item->path = entry.node.path();
    entry.item->priority = entry.priority;
    entry.item->timeout = entry.timeout;
    return *entry.item;
}

CMReply<QVariant> OpenNotifications::requestDisplay(quint32 id, Entry &entry)
{
    entry.isAttended = entry.item != nullptr;
    if (entry.isAttended) {
        m_attended.insert(entry.request, id);
        return askAttention(id, TavoAttentionNotifyPath(), updatedItem(entry));
    }
    const auto item = TavoNotificationDisplayItem()
                          .setId(entry.request)
                          .setPath(entry.node.path())
                          .setPriority(entry.priority)
                          .setTimeout(entry.timeout);
    return CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                            TavoValue().setNotificationDisplayItem(item), {});
}

CMReply<QVariant> OpenNotifications::askAttention(quint32 id, const CMPath &path,
                                                  const AttentionItem &item)
{
    CMReply<QVariant> reply =
        CMRoot()->invoke(path, QVariant::fromValue(item), CMReply<QVariant>());
    Q_EMIT attentionAsked(id, reply);
    return reply;
}

void OpenNotifications::showAnew(quint32 id, Entry &entry)
{
    if (entry.isAwaited) {
        // One request at a time: they must not pile up when a client changes its notification
        // faster than the display replies.
        entry.isStale = true;
        return;
    }
    hide(entry, Reason::Closed);
    show(id, entry);
}

void OpenNotifications::tellChange(quint32 id, Entry &entry)
{
    if (!entry.isAttended || !entry.item) {
        return;
    }
    // One request at a time, as in showAnew().
    entry.hasChanged = std::exchange(entry.isTelling, true);
    if (entry.hasChanged) {
        return;
    }
    AttentionItem item = updatedItem(entry);
    // Nothing is decided anew, so it keeps the priority that rules have given it.
    item.givesWay = true;
    item.priority = TavoNotificationItemPriority::Urgent;
    askAttention(id, TavoAttentionReplacePath(), item)
        .addWatcher(
            this,
            [this, id](const CMVoidReply &) {
                const auto told = m_entries.find(id);
                if (told != m_entries.end()) {
                    told->isTelling = false;
                    if (told->hasChanged) {
                        tellChange(id, *told);
                    }
                }
            },
            Qt::QueuedConnection);
}

void OpenNotifications::on_open_finished(quint32 id, const QString &request,
                                         const CMReply<QVariant> &reply)
{
    if (reply.error().isError()) {
        m_attended.remove(request); // no end is reported
    }
    const auto entry = find(id, request);
    if (entry == m_entries.end()) {
        return;
    }
    if (reply.error().isError()) {
        LOG4CPLUS_WARN(logger, "Notification " << id << " is not shown: "
                                               << reply.error().message().toString());
        remove(entry, Reason::Undefined);
        return;
    }
    if (entry->isAttended && !isShownByAttention(reply)) {
        // People's rules keep it from them.
        remove(entry, Reason::Undefined);
        return;
    }
    entry->isAwaited = false;
    if (entry->isStale) {
        showAnew(id, *entry);
    }
}

void OpenNotifications::hide(const Entry &entry, Reason reason, const QString &action)
{
    // The reply is ignored: if the notification has gone already, there is nothing to close.
    if (!entry.isAttended) {
        CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(),
                         TavoValue().setPath(entry.node.path()), {});
        return;
    }
    const auto ended = TavoAttentionEnded()
                           .setId(entry.request)
                           .setEnd(attentionEndFor(reason, !action.isNull()))
                           .setAction(action);
    CMRoot()->invoke(TavoAttentionClosePath(), TavoValue().setAttentionEnded(ended), {});
}

bool OpenNotifications::close(quint32 id, Reason reason)
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end()) {
        return false;
    }
    hide(*entry, reason);
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
    if (entry->isAttended && entry->item) {
        AttentionItem item = updatedItem(*entry);
        item.givesWay = true;
        CMRoot()->invoke(TavoAttentionReplacePath(), QVariant::fromValue(item), {});
        return;
    }
    entry->givesWay = true;
    hide(*entry, Reason::Closed);
}

void OpenNotifications::closeAll(Reason reason)
{
    const QList<quint32> ids = m_entries.keys();
    for (const quint32 id : ids) {
        const auto entry = m_entries.find(id);
        if (entry == m_entries.end()) {
            continue;
        }
        // The module for attention ends with the host, too, and may show it again afterwards.
        if (!entry->isAttended) {
            hide(*entry, reason);
        }
        remove(entry, reason);
    }
}

void OpenNotifications::takeCancel(const CMPath &path)
{
    const auto entry = m_entries.find(NotificationNode::idOf(path));
    if (entry != m_entries.end() && entry->node.path() == path) {
        remove(entry, Reason::Closed);
    }
}

bool OpenNotifications::closeAttended(const CMPath &path)
{
    const auto entry = m_entries.find(NotificationNode::idOf(path));
    return entry != m_entries.end() && entry->node.path() == path && entry->isAttended &&
           close(entry.key(), Reason::Closed);
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

OpenNotifications::Entries::iterator OpenNotifications::find(quint32 id, const QString &request)
{
    const auto entry = m_entries.find(id);
    return entry != m_entries.end() && entry->request == request ? entry : m_entries.end();
}

void OpenNotifications::on_display_ended(const CMPath & /*path*/, const QVariant &value)
{
    const auto ended = TavoValue(value.toHash()).displayEnded();
    const quint32 id = NotificationNode::idOf(ended.path());
    // The module for attention adds a number when it displays a message again.
    const auto entry = find(id, ended.id().section(QLatin1Char('/'), 0, 0));
    if (entry == m_entries.end()) {
        return;
    }
    if (entry->givesWay && ended.end() == TavoNotificationDisplayEnd::Cancelled) {
        entry->timeout = entry->timeout > 0 ? std::max(ended.remaining(), 1) : 0;
        entry->item.reset(); // it has been decided about already
        show(id, *entry);
    } else if (!entry->isAttended || ended.end() != TavoNotificationDisplayEnd::Cancelled) {
        // That module takes a message off the display also to show it as one with others.
        remove(entry, reasonFor(ended.end()));
    }
}

void OpenNotifications::on_queue_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (published) {
        return;
    }
    closeAll(Reason::Undefined);
}

void OpenNotifications::on_attention_ended(const CMPath & /*path*/, const QVariant &value)
{
    // Of what the display has reported, nothing is left.
    const auto ended = TavoValue(value.toHash()).attentionEnded();
    const QString request = ended.id();
    const quint32 id = m_attended.take(request);
    const auto entry = find(id, request);
    if (entry != m_entries.end() && !entry->givesWay) {
        remove(entry, reasonFor(ended.end()));
    }
}

void OpenNotifications::on_attention_nodeChanged(const CMPath & /*path*/, bool published)
{
    m_hasAttention = published;
    if (published) {
        return;
    }
    m_attended.clear();
    // It has closed the messages that it has opened.
    const QList<quint32> ids = m_entries.keys();
    for (const quint32 id : ids) {
        const auto entry = m_entries.find(id);
        if (entry != m_entries.end() && entry->isAttended) {
            remove(entry, Reason::Undefined);
        }
    }
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
        hide(*entry, Reason::Dismissed);
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
    const auto acted = m_entries.find(id);
    if (!isResident && acted != m_entries.end()) {
        hide(*acted, Reason::Dismissed, *key);
        remove(acted, Reason::Dismissed);
    }
}
