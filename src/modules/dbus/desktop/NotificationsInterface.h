// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/clients/Quotas.h"
#include "modules/dbus/DbusConfiguration.h"
#include "NotificationSounds.h"
#include "NotifyCall.h"
#include "OpenNotifications.h"

#include <bus/BusObject.h>

#include <QObject>

#include <functional>
#include <memory>
#include <unordered_map>

class BusConnection;
class BusWriter;
class Clients;

/// org.freedesktop.Notifications: what desktop programs notify their user with, shown by the
/// display. data/dbus/org.freedesktop.Notifications.xml describes it.
///
/// Thread and owner: its worker's. Calls wait for no module. Notifications stay open when their
/// client leaves the bus, and when the bus itself goes.
class NotificationsInterface : public QObject
{
    Q_OBJECT

public:
    NotificationsInterface(BusConnection &bus, Clients &clients, CMNodes *nodes,
                           ClientSounds &sounds, const DbusConfiguration &configuration);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost();
    void on_notifications_closed(quint32 id, OpenNotifications::Reason reason);
    void on_notifications_actionInvoked(quint32 id, const QString &key, const QString &token);

private:
    using Handler = void (NotificationsInterface::*)(const BusMessage &call);

    void add(const char *method, Handler handler);

    void notify(const BusMessage &call);
    void closeNotification(const BusMessage &call);
    void getCapabilities(const BusMessage &call);
    void getServerInformation(const BusMessage &call);

    /// As most servers do: some clients listen by another connection than they notify by, and the
    /// arguments tell nobody what was shown.
    void emitToAll(const char *signal, const std::function<void(BusWriter &)> &write);

    /// To the one who opened the notification alone: with the token, others could raise a window in its
    /// stead.
    void sendToken(quint32 id, const QString &token);

    BusConnection &m_bus;
    Clients &m_clients;
    const NotifyCall::Timeouts m_timeouts;
    OpenNotifications m_notifications;
    std::unordered_map<quint32, Quotas::Charge> m_charges; ///< of those that are open
    NotificationSounds m_sounds;
    std::unique_ptr<BusObject> m_object; ///< while connected
};
