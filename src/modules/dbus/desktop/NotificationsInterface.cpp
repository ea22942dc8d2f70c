// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationsInterface.h"

#include "modules/dbus/clients/Clients.h"

#include <bus/BusConnection.h>
#include <bus/BusError.h>

#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

constexpr const char *interfaceName = "org.freedesktop.Notifications";
constexpr const char *objectPath = "/org/freedesktop/Notifications";
constexpr const char *protocolVersion = "1.2";
} // namespace

NotificationsInterface::NotificationsInterface(BusConnection &bus, Clients &clients, CMNodes *nodes,
                                               ClientSounds &sounds,
                                               const DbusConfiguration &configuration)
    : m_bus(bus)
    , m_clients(clients)
    , m_timeouts{configuration.defaultTimeoutMs, configuration.criticalTimeoutMs}
    , m_notifications(nodes)
    , m_sounds(sounds, configuration.sounds)
{
    m_bus.ownName(QString::fromLatin1(interfaceName));
    tavoConnect(&m_bus, &BusConnection::connected, this, &NotificationsInterface::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &NotificationsInterface::on_bus_lost);
    tavoConnect(&m_notifications, &OpenNotifications::closed, this,
                &NotificationsInterface::on_notifications_closed);
    tavoConnect(&m_notifications, &OpenNotifications::actionInvoked, this,
                &NotificationsInterface::on_notifications_actionInvoked);
}

void NotificationsInterface::on_bus_connected()
{
    m_object = m_bus.createObject(objectPath, interfaceName);
    add("Notify", &NotificationsInterface::notify, "susssasa{sv}i",
        {"app_name", "replaces_id", "app_icon", "summary", "body", "actions", "hints",
         "expire_timeout"},
        "u", {"id"});
    add("CloseNotification", &NotificationsInterface::closeNotification, "u", {"id"}, "", {});
    add("GetCapabilities", &NotificationsInterface::getCapabilities, "", {}, "as",
        {"capabilities"});
    add("GetServerInformation", &NotificationsInterface::getServerInformation, "", {}, "ssss",
        {"name", "vendor", "version", "spec_version"});
    m_object->addSignal("NotificationClosed", "uu", Texts{"id", "reason"});
    m_object->addSignal("ActionInvoked", "us", Texts{"id", "action_key"});
    m_object->addSignal("ActivationToken", "us", Texts{"id", "activation_token"});
    m_object->publish();
}

void NotificationsInterface::on_bus_lost()
{
    m_object.reset();
}

void NotificationsInterface::add(const char *method, Handler handler, const char *in,
                                 const Texts &inNames, const char *out, const Texts &outNames)
{
    const Clients::Handler handle = [this, handler](sdbus::MethodCall &call) {
        (this->*handler)(call);
    };
    m_object->addMethod(
        method, in, inNames, out, outNames,
        [this, handle](sdbus::MethodCall &call) { m_clients.handle(call, handle); });
}

void NotificationsInterface::notify(sdbus::MethodCall &call)
{
    const NotifyCall wish = NotifyCall::read(call, m_timeouts, m_clients.limits().valueBytes);
    quint32 id = wish.replacedId;
    if (m_notifications.isOpen(id)) {
        m_notifications.replace(id, wish.notification);
    } else {
        Quotas::Charge charge =
            m_clients.quotas().charge(call.getSender(), Quotas::OpenNotifications);
        // One that has closed meanwhile is opened again by the id that its client knows.
        id = id != 0 ? id : m_notifications.freeId();
        const CMError error = m_notifications.open(id, wish.notification);
        if (error.isError()) {
            BusError::reply(call, error).send();
            return;
        }
        m_charges.emplace(id, std::move(charge));
    }
    if (!wish.isSilent) {
        m_sounds.play(call.getSender(), id, wish.soundFile, wish.soundName,
                      wish.notification.priority);
    }
    sdbus::MethodReply answer = call.createReply();
    answer << id;
    answer.send();
}

void NotificationsInterface::closeNotification(sdbus::MethodCall &call)
{
    std::uint32_t id = 0;
    call >> id;
    if (!m_notifications.close(id, OpenNotifications::Reason::Closed)) {
        throw sdbus::Error("org.freedesktop.Notifications.InvalidId",
                           "No notification is open by the id " + std::to_string(id));
    }
    call.createReply().send();
}

void NotificationsInterface::getCapabilities(sdbus::MethodCall &call)
{
    sdbus::MethodReply answer = call.createReply();
    answer << Texts{"actions", "body", "sound"};
    answer.send();
}

void NotificationsInterface::getServerInformation(sdbus::MethodCall &call)
{
    sdbus::MethodReply answer = call.createReply();
    answer << "Tavo"
           << "Tavo" << TAVO_VERSION << protocolVersion;
    answer.send();
}

template <typename... Arguments>
void NotificationsInterface::emitToAll(const char *signal, const Arguments &...arguments)
{
    if (!m_object) {
        return;
    }
    try {
        sdbus::Signal message = m_object->createSignal(signal);
        (message << ... << arguments);
        message.send();
    } catch (const sdbus::Error &error) {
        LOG4CPLUS_WARN(logger, signal << " can't be sent: " << error.what());
    }
}

void NotificationsInterface::sendToken(quint32 id, const QString &token)
{
    const auto charge = m_charges.find(id);
    if (!m_object || charge == m_charges.end() || charge->second.client().empty()) {
        return;
    }
    try {
        const std::string text = token.toStdString();
        sdbus::Signal message = m_object->createSignal("ActivationToken");
        message << id << text;
        m_clients.send(charge->second.client(), message, text.size());
    } catch (const sdbus::Error &error) {
        LOG4CPLUS_WARN(logger, "A token can't be sent: " << error.what());
    }
}

void NotificationsInterface::on_notifications_closed(quint32 id, OpenNotifications::Reason reason)
{
    m_charges.erase(id);
    if (reason == OpenNotifications::Reason::Dismissed ||
        reason == OpenNotifications::Reason::Closed) {
        // Nobody wants to hear any more what has been seen to.
        m_sounds.stop(id);
    } else {
        m_sounds.release(id);
    }
    emitToAll("NotificationClosed", id, quint32(reason));
}

void NotificationsInterface::on_notifications_actionInvoked(quint32 id, const QString &key,
                                                            const QString &token)
{
    if (!token.isEmpty()) {
        sendToken(id, token);
    }
    emitToAll("ActionInvoked", id, key.toStdString());
}
