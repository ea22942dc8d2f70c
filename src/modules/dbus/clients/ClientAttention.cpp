// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientAttention.h"

#include "Clients.h"
#include "ClientSounds.h"
#include "Refusals.h"
#include <base/MessageNode.h>

#include <algorithm>
#include <utility>

namespace {
CMReply<QVariant> refused(const TrString &reason)
{
    CMReply<QVariant> reply;
    reply.setError(CMError(QStringLiteral("Attention"), reason));
    return reply;
}

/// The actions as the module reads them, without unknown fields, and no more than it shows.
TavoList<TavoAttentionAction> actionsOf(const TavoAttentionItem &requested)
{
    TavoList<TavoAttentionAction> actions;
    const auto all = requested.actions();
    const int count = std::min(all.size(), MessageNode::maxActions);
    for (int index = 0; index < count; ++index) {
        const TavoAttentionAction action = all.at(index);
        if (action.key().toUtf8().size() <= MessageNode::maxKeyBytes) {
            actions.append(TavoAttentionAction().setKey(action.key()).setLabel(action.label()));
        }
    }
    return actions;
}

/// Of an item whose value has this many bytes.
std::size_t storedBytes(const TavoAttentionItem &item, std::size_t bytes)
{
    const auto actions = item.actions(); // converted each time, if they are no records
    for (int index = 0; index < actions.size(); ++index) {
        bytes += MessageNode::actionBytes(actions.at(index).key());
    }
    return Quotas::storedBytes(bytes);
}
} // namespace

ClientAttention::ClientAttention(Clients &clients, ClientSounds &sounds)
    : m_clients(clients)
    , m_sounds(sounds)
    , m_pages(clients)
{
    CMRoot()->connectValueChange(TavoAttentionEndedPath(), this,
                                 &ClientAttention::on_attention_ended);
    CMRoot()->connectNodeChange(TavoAttentionNotifyPath(), this,
                                &ClientAttention::on_attention_nodeChanged);
}

TavoAttentionItem ClientAttention::itemOf(const std::string &client, const QVariant &value) const
{
    const auto requested = TavoValue(value.toHash()).attentionItem();
    if (requested.id().startsWith(QLatin1String("dbus-"))) {
        // A client that took the ids of desktop notifications would keep them from people.
        throw Refusals::idOfAnother();
    }
    return TavoAttentionItem()
        .setId(requested.id())
        .setTitle(requested.title())
        .setText(requested.text())
        .setPath(requested.path())
        .setApplication(requested.application())
        .setSource(requested.source())
        .setUser(m_clients.userOf(client))
        .setIcon(requested.icon())
        .setCategory(requested.category())
        .setGroup(requested.group())
        .setPriority(m_clients.limits().allowedPriority(requested.priority()))
        .setTimeout(requested.timeout())
        .setActions(actionsOf(requested))
        .setSpeech(requested.speech())
        .setLanguage(requested.language())
        .setTransient(requested.isTransient());
}

CMReply<QVariant> ClientAttention::notify(const std::string &client, const QVariant &value,
                                          std::size_t bytes)
{
    TavoAttentionItem item = itemOf(client, value);
    if (item.id().isEmpty()) {
        item.setId(tavoGenerateUuid());
    }
    const std::string id = item.id().toStdString();
    if (m_notifications.count(id) != 0) {
        // The module may have closed it already. Then it would open another one that nobody counts.
        return refused(TAVO_TR("A notification with this id is open"));
    }
    PathPlaces::Place place = placeFor(client, item);
    // First, because to make room for it could give up the notification before it is open.
    const CMPath sound = prepareSound(client, value, bytes, item.id());
    item.setSoundFollows(!sound.isEmpty());
    try {
        m_notifications.emplace(
            id, Notification{item, chargeFor(client, item, bytes), std::move(place)});
    } catch (const BusError &) {
        m_sounds.discard(sound);
        throw;
    }
    CMReply<QVariant> reply = send(TavoAttentionNotifyPath(), item, sound);
    forgetIfRefused(id, reply);
    m_clients.leftMessages().makeWay(item.priority());
    return reply;
}

CMReply<QVariant> ClientAttention::replace(const std::string &client, const QVariant &value,
                                           std::size_t bytes)
{
    TavoAttentionItem item = itemOf(client, value);
    const std::string id = item.id().toStdString();
    const auto notification = m_notifications.find(id);
    const bool isKnown = notification != m_notifications.end();
    if (isKnown && !m_clients.isOfUser(client, notification->second.charge.user())) {
        throw Refusals::notificationOfAnother();
    }
    if (isKnown) {
        item.setPath(notification->second.item.path()); // The module goes on to show that node.
    }
    PathPlaces::Place place = isKnown ? PathPlaces::Place() : placeFor(client, item);
    const CMPath sound = prepareSound(client, value, bytes, item.id());
    if (isKnown && notification->second.charge.isGivenUp()) {
        // It is being closed, and counts no longer. It may have made room for its own sound.
        m_sounds.discard(sound);
        return refused(TAVO_TR("There is no such notification"));
    }
    try {
        if (isKnown && notification->second.charge.client() == client) {
            m_clients.quotas().change(notification->second.charge, storedBytes(item, bytes),
                                      item.priority());
            notification->second.item = item;
        } else {
            Notification changed{item, chargeFor(client, item, bytes), std::move(place)};
            if (isKnown) {
                changed.place = std::move(notification->second.place);
            }
            m_notifications.insert_or_assign(id, std::move(changed));
        }
    } catch (const BusError &) {
        m_sounds.discard(sound);
        throw;
    }
    CMReply<QVariant> reply = send(TavoAttentionReplacePath(), item, sound);
    if (!isKnown) {
        forgetIfRefused(id, reply);
    }
    return reply;
}

PathPlaces::Place ClientAttention::placeFor(const std::string &client,
                                            const TavoAttentionItem &item) const
{
    return m_clients.pathPlaces().take(m_clients.quotas().userOf(client), item.path());
}

Quotas::Charge ClientAttention::chargeFor(const std::string &client, const TavoAttentionItem &item,
                                          std::size_t bytes)
{
    return m_clients.quotas().charge(
        client, {Quotas::OpenNotifications, 1, storedBytes(item, bytes), item.priority()},
        [id = item.id()] {
            CMRoot()->invoke(TavoAttentionClosePath(), TavoValue().setString_(id), {});
        },
        [this, id = item.id().toStdString()] { takeLeft(id); });
}

void ClientAttention::forgetIfRefused(const std::string &id, const CMReply<QVariant> &reply)
{
    reply.onFinished(this, [this, id](const CMReply<QVariant> &finished) {
        if (finished.error().isError()) {
            m_notifications.erase(id);
        }
    });
}

CMReply<QVariant> ClientAttention::close(const QVariant &value)
{
    return CMRoot()->invoke(TavoAttentionClosePath(),
                            TavoValue().setString_(TavoValue(value.toHash()).string_()), {});
}

CMReply<QVariant> ClientAttention::readHistory(const std::string &client, const QVariant &value)
{
    if (m_pages.count(client) > 0) {
        throw Refusals::historyIsBeingRead();
    }
    return m_pages.add(client,
                       [value] { return CMRoot()->invoke(TavoAttentionHistoryPath(), value, {}); });
}

CMPath ClientAttention::prepareSound(const std::string &client, const QVariant &value,
                                     std::size_t bytes, const QString &notification)
{
    const auto sound = TavoValue(value.toHash()).attentionItem().sound();
    return sound.isEmpty() ? CMPath() : m_sounds.prepare(client, sound, bytes, notification);
}

CMReply<QVariant> ClientAttention::send(const CMPath &path, const TavoAttentionItem &item,
                                        const CMPath &preparedSound)
{
    CMReply<QVariant> reply = CMRoot()->invoke(path, TavoValue().setAttentionItem(item), {});
    if (!preparedSound.isEmpty()) {
        m_sounds.start(preparedSound, item.id());
    }
    return reply;
}

void ClientAttention::giveWay(const QString &id)
{
    const auto notification = m_notifications.find(id.toStdString());
    if (notification == m_notifications.end()) {
        return;
    }
    TavoAttentionItem &item = notification->second.item;
    item.setPriority(LeftMessages::below(item.priority())).setGivesWay(true).setSoundFollows(false);
    send(TavoAttentionReplacePath(), item, {});
}

/// The client of a notification has left.
void ClientAttention::takeLeft(const std::string &id)
{
    const auto found = m_notifications.find(id);
    if (found == m_notifications.end()) {
        return;
    }
    const TavoAttentionItem &item = found->second.item;
    if (LeftMessages::givesWay(item.priority(), item.timeout())) {
        found->second.left =
            m_clients.leftMessages().add(item.priority(), [this, id = item.id()] { giveWay(id); });
    }
}

void ClientAttention::on_attention_ended(const CMPath & /*path*/, const QVariant &value)
{
    const QString id = TavoValue(value.toHash()).attentionEnded().id();
    m_notifications.erase(id.toStdString());
    m_sounds.cancelOfNotification(id);
}

void ClientAttention::on_attention_nodeChanged(const CMPath & /*path*/, bool published)
{
    if (!published) {
        m_notifications.clear();
    }
}
