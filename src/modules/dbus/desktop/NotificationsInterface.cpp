// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationsInterface.h"

#include "modules/dbus/clients/Clients.h"
#include "modules/dbus/clients/Refusals.h"
#include "PlainText.h"
#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <bus/BusWriter.h>
#include <bus/ModelErrors.h>

#include <chrono>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

constexpr const char *protocolVersion = "1.2";

/// Enough for the signals of as many notifications as may be open. Short enough for a host that is
/// told to stop while the bus hangs.
constexpr std::chrono::seconds flushTimeout(1);

TavoValue valueAt(const CMPath &path)
{
    const CMReply<QVariant> reply;
    CMRoot()->getDataRequest(CMGetDataRequest(path, reply)); // nodes reply at once
    return TavoValue(reply.value().toHash());
}
} // namespace

NotificationsInterface::NotificationsInterface(BusConnection &bus, Clients &clients, CMNodes *nodes,
                                               ClientSounds &sounds, ClientInhibitions &inhibitions,
                                               const QString &soundTheme,
                                               const NotifyCall::Timeouts &timeouts)
    : m_bus(bus)
    , m_clients(clients)
    , m_inhibitions(inhibitions)
    , m_timeouts(timeouts)
    , m_notifications(nodes)
    , m_sounds(sounds, soundTheme)
{
    m_bus.ownName(QString::fromStdString(BusInterface::notifications().name));
    tavoConnect(&m_bus, &BusConnection::connected, this, &NotificationsInterface::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &NotificationsInterface::on_bus_lost);
    tavoConnect(&m_notifications, &OpenNotifications::closed, this,
                &NotificationsInterface::on_notifications_closed);
    tavoConnect(&m_notifications, &OpenNotifications::actionInvoked, this,
                &NotificationsInterface::on_notifications_actionInvoked);
    tavoConnect(&m_notifications, &OpenNotifications::attentionAsked, this,
                &NotificationsInterface::on_notifications_attentionAsked);
    CMRoot()->connectValueChange(TavoAttentionDoNotDisturbPath(), this,
                                 &NotificationsInterface::on_doNotDisturb_changed);
    CMRoot()->connectNodeChange(TavoAttentionDoNotDisturbPath(), this,
                                &NotificationsInterface::on_doNotDisturb_nodeChanged);
    readDoNotDisturb();
}

NotificationsInterface::~NotificationsInterface()
{
    if (m_notifications.count() > 0) {
        m_notifications.closeAll(OpenNotifications::Reason::Undefined);
        m_object.reset(); // so that nobody opens another one during this
        m_clients.flush(flushTimeout);
    }
}

void NotificationsInterface::reconfigure(const QString &soundTheme,
                                         const NotifyCall::Timeouts &timeouts)
{
    m_sounds.setTheme(soundTheme);
    m_timeouts = timeouts;
}

void NotificationsInterface::on_bus_connected()
{
    m_object = m_bus.createObject(BusInterface::notifications());
    const auto serve = [this](const char *method, auto handler,
                              CallTurns::Effect effect = CallTurns::Effect::Reply) {
        m_clients.serve(*m_object, method, this, handler, effect);
    };
    serve("Notify", &NotificationsInterface::notify, CallTurns::Effect::Lasting);
    serve("CloseNotification", &NotificationsInterface::closeNotification,
          CallTurns::Effect::Lasting);
    serve("GetCapabilities", &NotificationsInterface::getCapabilities);
    serve("GetServerInformation", &NotificationsInterface::getServerInformation);
    serve("Inhibit", &NotificationsInterface::inhibit, CallTurns::Effect::OfClient);
    serve("UnInhibit", &NotificationsInterface::endInhibition, CallTurns::Effect::Lasting);
    m_object->setProperty("Inhibited", [this] { return QVariant(m_isInhibited); });
    m_clients.publish(*m_object);
}

void NotificationsInterface::on_bus_lost()
{
    m_inhibiting.clear();
    m_object.reset();
}

/// The client of a notification has left.
void NotificationsInterface::takeLeft(quint32 id)
{
    const auto priority = m_notifications.priorityOf(id);
    if (LeftMessages::givesWay(priority, m_notifications.timeoutOf(id))) {
        m_left[id] =
            m_clients.leftMessages().add(priority, [this, id] { m_notifications.giveWay(id); });
    }
}

void NotificationsInterface::notify(const BusMessage &call)
{
    NotifyCall request = NotifyCall::read(call, m_timeouts, m_clients.limits());
    request.notification.user = m_clients.userOf(call.sender());
    const AllowedSound sound = m_sounds.find(call.sender(), request.hints);
    if (request.hasBadActions) {
        LOG4CPLUS_WARN(logger, "A notification of "
                                   << call.sender()
                                   << " is shown without some of its actions: they"
                                      " have no label, a long key or are too many");
    }
    quint32 id = request.replacedId;
    auto charged = m_charges.find(id);
    if (charged != m_charges.end() && !m_clients.isOfUser(call.sender(), charged->second.user())) {
        id = 0; // another user's stays as it is
        charged = m_charges.end();
    }
    if (charged != m_charges.end() && charged->second.client() == call.sender()) {
        m_clients.quotas().change(charged->second, request.storedBytes,
                                  request.notification.priority);
        m_notifications.replace(id, request.notification);
    } else {
        const auto opened = std::make_shared<quint32>(id);
        Quotas::Charge charge = chargeFor(call.sender(), request, opened);
        // The one that it replaces may have been closed to make room.
        if (m_notifications.isOpen(id)) {
            m_notifications.replace(id, request.notification);
            tellPreviousClient(id);
            m_charges[id] = std::move(charge);
        } else {
            // A notification that has closed is opened again under the id that the client knows.
            id = id != 0 ? id : m_notifications.freeId();
            m_charges[id] = std::move(charge);
            const CMError error =
                m_notifications.open(id, request.notification, request.hints.hasSound());
            if (error.isError()) {
                m_charges.erase(id);
                m_clients.reply(call, ModelErrors::createReply(call, error));
                return;
            }
        }
        *opened = id;
        m_left.erase(id);
    }
    m_clients.leftMessages().makeWay(request.notification.priority);
    if (!request.hints.isSilent) {
        m_sounds.play(call.sender(), id, sound, request.notification.priority,
                      request.hints.hasSound() ? m_notifications.requestOf(id) : QString());
    }
    BusWriter reply(call.createReply());
    reply.writeUInt32(id);
    m_clients.reply(call, reply.message());
}

void NotificationsInterface::tellPreviousClient(quint32 id)
{
    // Where everyone hears of the end, nobody misses it.
    if (!m_bus.isOfOneUser()) {
        emitClosed(Receiver::Client, clientOf(id), id, OpenNotifications::Reason::Undefined);
    }
}

Quotas::Charge NotificationsInterface::chargeFor(const std::string &client,
                                                 const NotifyCall &request,
                                                 const std::shared_ptr<const quint32> &id)
{
    return m_clients.quotas().charge(
        client, {Quotas::OpenNotifications, 1, request.storedBytes, request.notification.priority},
        [this, id] { m_notifications.close(*id, OpenNotifications::Reason::Undefined); },
        [this, id] { takeLeft(*id); });
}

void NotificationsInterface::closeNotification(const BusMessage &call)
{
    const std::uint32_t id = BusReader(call).readUInt32();
    if (!m_notifications.close(id, OpenNotifications::Reason::Closed)) {
        throw Refusals::notificationNotOpen(id);
    }
    m_clients.reply(call, call.createReply());
}

void NotificationsInterface::getCapabilities(const BusMessage &call)
{
    QStringList capabilities{QStringLiteral("action-icons"), QStringLiteral("actions"),
                             QStringLiteral("body"),         QStringLiteral("body-markup"),
                             QStringLiteral("icon-static"),  QStringLiteral("sound")};
    if (CMCatalog::entry(TavoAttentionInhibitPath())) {
        capabilities.append(QStringLiteral("inhibitions"));
    }
    if (valueAt(TavoAttentionHistoryStatePath()).attentionHistory().kept()) {
        capabilities.append(QStringLiteral("persistence"));
    }
    BusWriter reply(call.createReply());
    reply.writeStringList(capabilities);
    m_clients.reply(call, reply.message());
}

void NotificationsInterface::inhibit(const BusMessage &call)
{
    BusReader reader(call, m_clients.limits().valueBytes);
    const QString application = plainLine(reader.readString());
    const QString reason = plainLine(reader.readString());
    const quint32 cookie = ++m_lastInhibition;
    const auto inhibition = TavoAttentionInhibition()
                                .setId(QString::number(cookie))
                                .setOn(true)
                                .setApplication(application)
                                .setReason(reason);
    const CMReply<QVariant> answer = m_inhibitions.send(
        call.sender(), inhibition, std::size_t(application.size()) + std::size_t(reason.size()));
    const auto reply = [this, cookie](const BusMessage &to, const CMError &error) {
        if (error.isError()) {
            m_clients.reply(to, ModelErrors::createReply(to, error));
            return;
        }
        BusWriter writer(to.createReply());
        writer.writeUInt32(cookie);
        m_clients.reply(to, writer.message());
    };
    if (answer.isFinished()) {
        reply(call, answer.error());
        return;
    }
    m_inhibiting.emplace(cookie, call);
    answer.onFinished(this, [this, cookie, reply](const CMReply<QVariant> &finished) {
        const auto waiting = m_inhibiting.extract(cookie);
        if (!waiting.empty()) {
            m_clients.run(waiting.mapped(),
                          [&](const BusMessage &to) { reply(to, finished.error()); });
        }
    });
}

void NotificationsInterface::endInhibition(const BusMessage &call)
{
    const std::uint32_t cookie = BusReader(call).readUInt32();
    const QString id = QString::number(cookie);
    if (!m_inhibitions.has(call.sender(), id)) {
        throw Refusals::noSuchInhibition(cookie);
    }
    m_inhibitions.send(call.sender(), TavoAttentionInhibition().setId(id), 0);
    m_clients.reply(call, call.createReply());
}

void NotificationsInterface::on_doNotDisturb_changed(const CMPath & /*path*/,
                                                     const QVariant & /*value*/)
{
    readDoNotDisturb();
}

void NotificationsInterface::on_doNotDisturb_nodeChanged(const CMPath & /*path*/,
                                                         bool /*published*/)
{
    readDoNotDisturb();
}

void NotificationsInterface::readDoNotDisturb()
{
    const bool isOn = valueAt(TavoAttentionDoNotDisturbPath()).attentionDoNotDisturb().on();
    if (std::exchange(m_isInhibited, isOn) == isOn || !m_object || !m_bus.isOfOneUser()) {
        return;
    }
    try {
        m_clients.sendToAll({}, m_object->createPropertyChange("Inhibited"), 0);
    } catch (const BusError &error) {
        LOG4CPLUS_WARN(logger, "A change of Inhibited can't be sent: " << error.what());
    }
}

void NotificationsInterface::getServerInformation(const BusMessage &call)
{
    BusWriter reply(call.createReply());
    for (const char *text : {"Tavo", "Tavo", TAVO_VERSION, protocolVersion}) {
        reply.writeString(QString::fromLatin1(text));
    }
    m_clients.reply(call, reply.message());
}

std::string NotificationsInterface::clientOf(quint32 id) const
{
    const auto charge = m_charges.find(id);
    return charge == m_charges.end() ? std::string() : charge->second.client();
}

void NotificationsInterface::emitTo(Receiver receiver, const std::string &client,
                                    const char *signal,
                                    const std::function<void(BusWriter &)> &write)
{
    if (!m_object) {
        return;
    }
    try {
        BusWriter writer(m_object->createSignal(signal));
        write(writer);
        if (receiver == Receiver::Everyone && m_bus.isOfOneUser()) {
            m_clients.sendToAll(client, writer.message(), writer.bytesWritten());
        } else if (!client.empty() &&
                   !m_clients.send(client, writer.message(), writer.bytesWritten())) {
            LOG4CPLUS_WARN(logger, "The client " << client << " doesn't read its signals: "
                                                 << signal << " is left out");
        }
    } catch (const BusError &error) {
        LOG4CPLUS_WARN(logger, signal << " can't be sent: " << error.what());
    }
}

void NotificationsInterface::on_model_messageCancelled(const CMPath &path)
{
    m_notifications.takeCancel(path);
}

void NotificationsInterface::on_notifications_closed(quint32 id, OpenNotifications::Reason reason)
{
    const std::string client = clientOf(id);
    m_charges.erase(id);
    m_left.erase(id);
    if (reason == OpenNotifications::Reason::Dismissed ||
        reason == OpenNotifications::Reason::Closed) {
        // Someone has attended to the notification.
        m_sounds.stop(id);
    } else {
        m_sounds.release(id);
    }
    emitClosed(Receiver::Everyone, client, id, reason);
}

void NotificationsInterface::emitClosed(Receiver receiver, const std::string &client, quint32 id,
                                        OpenNotifications::Reason reason)
{
    emitTo(receiver, client, "NotificationClosed", [&](BusWriter &signal) {
        signal.writeUInt32(id);
        signal.writeUInt32(quint32(reason));
    });
}

void NotificationsInterface::on_notifications_attentionAsked(quint32 id,
                                                             const CMReply<QVariant> &reply)
{
    const auto charge = m_charges.find(id);
    if (charge != m_charges.end()) {
        m_clients.addAttentionLoad(charge->second.user(), reply);
    }
}

void NotificationsInterface::on_notifications_actionInvoked(quint32 id, const QString &key,
                                                            const QString &token)
{
    const std::string client = clientOf(id);
    if (!token.isEmpty()) {
        // Never to others, who could raise a window in the client's place.
        emitTo(Receiver::Client, client, "ActivationToken", [&](BusWriter &signal) {
            signal.writeUInt32(id);
            signal.writeString(token);
        });
    }
    emitTo(Receiver::Everyone, client, "ActionInvoked", [&](BusWriter &signal) {
        signal.writeUInt32(id);
        signal.writeString(key);
    });
}
