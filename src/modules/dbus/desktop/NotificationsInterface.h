// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/clients/ClientInhibitions.h"
#include "modules/dbus/clients/LeftMessages.h"
#include "modules/dbus/clients/Quotas.h"
#include "NotificationSounds.h"
#include "NotifyCall.h"
#include "OpenNotifications.h"
#include <bus/BusMessage.h>
#include <bus/BusObject.h>

#include <QObject>

#include <functional>
#include <map>
#include <memory>

class BusConnection;
class BusWriter;
class Clients;

/// org.freedesktop.Notifications: the notifications of desktop programs, shown by the display.
/// data/dbus/org.freedesktop.Notifications.xml describes it.
///
/// Owned by the worker, used in its thread. No call waits for a module. Notifications stay open when
/// their client leaves the bus, and when the bus itself goes.
class NotificationsInterface : public QObject
{
    Q_OBJECT

public:
    NotificationsInterface(BusConnection &bus, Clients &clients, CMNodes *nodes,
                           ClientSounds &sounds, ClientInhibitions &inhibitions,
                           const QString &soundTheme, const NotifyCall::Timeouts &timeouts);

    /// Closes all notifications, so that nobody waits for their end for ever. Waits until the bus has
    /// taken the signals, but no longer than 1 s.
    ~NotificationsInterface() override;

    /// For notifications from now on.
    void reconfigure(const QString &soundTheme, const NotifyCall::Timeouts &timeouts);

    /// Closes the notification at the path if the module for attention shows it; false otherwise.
    bool closeAttended(const CMPath &path) { return m_notifications.closeAttended(path); }

public Q_SLOTS:
    /// A client has requested the display to close the notification at the path.
    void on_model_messageCancelled(const CMPath &path);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost();
    void on_doNotDisturb_changed(const CMPath &path, const QVariant &value);
    void on_doNotDisturb_nodeChanged(const CMPath &path, bool published);
    void on_notifications_closed(quint32 id, OpenNotifications::Reason reason);
    void on_notifications_attentionAsked(quint32 id, const CMReply<QVariant> &reply);
    void on_notifications_actionInvoked(quint32 id, const QString &key, const QString &token);

private:
    void notify(const BusMessage &call);
    void closeNotification(const BusMessage &call);
    void inhibit(const BusMessage &call);
    void endInhibition(const BusMessage &call);

    /// Tells clients of a change.
    void readDoNotDisturb();

    /// Charges a client for the notification that it opens. Throws BusError::limitExceeded() if it
    /// has too many. The id must hold the notification's id until the notification is closed.
    void takeLeft(quint32 id);
    Quotas::Charge chargeFor(const std::string &client, const NotifyCall &request,
                             const std::shared_ptr<const quint32> &id);

    void getCapabilities(const BusMessage &call);
    void getServerInformation(const BusMessage &call);

    /// The client that opened the notification; empty if it has left the bus.
    std::string clientOf(quint32 id) const;

    enum class Receiver {
        Client,
        Everyone ///< on a bus of one user, as with most servers, because some programs do not listen on
                 ///< the connection that they notify on; only the client on other buses
    };

    /// Sends a signal about a notification of the client; the client may be empty.
    void emitTo(Receiver receiver, const std::string &client, const char *signal,
                const std::function<void(BusWriter &)> &write);

    void emitClosed(Receiver receiver, const std::string &client, quint32 id,
                    OpenNotifications::Reason reason);

    /// Another client has changed the notification, which belongs to it from now on. For the previous
    /// one it is closed.
    void tellPreviousClient(quint32 id);

    BusConnection &m_bus;
    Clients &m_clients;
    ClientInhibitions &m_inhibitions;
    quint32 m_lastInhibition = 0;

    /// That wait for the module's reply, by cookie. Its watcher may be destroyed in any thread, a call may not.
    std::map<quint32, BusMessage> m_inhibiting;
    bool m_isInhibited = false; ///< do-not-disturb is on
    NotifyCall::Timeouts m_timeouts;
    OpenNotifications m_notifications;
    std::map<quint32, Quotas::Charge> m_charges;   ///< of open notifications, by id
    std::map<quint32, LeftMessages::Place> m_left; ///< of those whose client has left
    NotificationSounds m_sounds;
    std::unique_ptr<BusObject> m_object; ///< while connected
};
