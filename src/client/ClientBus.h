// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusConnection.h"
#include "client/PendingRequests.h"

#include <core/model/cmerror.h>
#include <core/model/cmreply.h>
#include <core/records/cmpath.h>

#include <QObject>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <string>
#include <vector>

/// An interface of the host on the bus.
struct HostInterface
{
    const char *path;
    const char *name;
};

inline constexpr HostInterface s_modelInterface{"/org/tavo/Model1", "org.tavo.Model1"};
inline constexpr HostInterface s_propertiesInterface{"/org/tavo/Model1",
                                                     "org.freedesktop.DBus.Properties"};
inline constexpr HostInterface s_messagesInterface{"/org/freedesktop/Notifications",
                                                   "org.freedesktop.Notifications"};

/// The bus's own, which isn't the host's.
inline constexpr HostInterface s_busInterface{"/org/freedesktop/DBus", "org.freedesktop.DBus"};

/// The host as messages: knows whether it is there, sends it requests, takes their answers and its
/// signals apart. What the client's classes share; theirs is what is said.
///
/// Thread: the one that made it. Each request is finished once, from the event loop: at the end of
/// this at the latest.
class ClientBus : public QObject
{
    Q_OBJECT

public:
    /// Appends a request's arguments; what it throws becomes the request's error.
    using Write = std::function<void(sdbus::MethodCall &)>;
    using Finish = PendingRequests::Finish;

    explicit ClientBus(const QString &bus);
    ~ClientBus() override;

    bool isAvailable() const { return m_state == State::Available; }
    QString unavailableReason() const { return m_reason; }
    void setPatience(int milliseconds) { m_patienceMs = milliseconds; }

    /// Not finished any more once the context is gone.
    void send(QObject *context, const HostInterface &interface, const char *method,
              const Write &write, const Finish &finish);

    /// Sends, and has the answer read into a reply.
    template <typename T>
    CMReply<T> ask(const HostInterface &interface, const char *method, const Write &write,
                   const std::function<T(sdbus::MethodReply &)> &read);

Q_SIGNALS:
    void availableChanged(bool available);
    void valueChanged(const CMPath &path, const QVariant &value);
    void rowsChanged(const CMPath &path, const QStringList &changes, int first, int count);
    void nodeChanged(const CMPath &path, bool published);
    void received(const CMPath &inbox, const QVariant &value);
    void messageClosed(uint id, uint reason);
    void actionInvoked(uint id, const QString &key);

private Q_SLOTS:
    void on_connection_connected();
    void on_connection_lost(const QString &reason, bool isSilent);

private:
    /// Without a bus, or on a connection to one that hangs: NoBus.
    enum class State { Untried, NoBus, NoHost, Available };

    /// One that is not sent yet.
    struct Request
    {
        quint64 number;
        HostInterface interface;
        const char *method;
        Write write;
    };

    void followHost();
    void match(const std::string &rule, void (ClientBus::*handler)(sdbus::Message &));
    void matchSignals(const HostInterface &interface, void (ClientBus::*handler)(sdbus::Message &));
    /// The bus lets pass what any program sends to this one alone, whatever the match says.
    bool isFromHost(const sdbus::Message &signal) const;
    void on_owner_changed(sdbus::Message &message);
    void on_model_signal(sdbus::Message &message);
    void on_messages_signal(sdbus::Message &message);
    void setState(State state, const QString &reason);

    void send(QObject *context, const HostInterface &interface, const char *method,
              const Write &write, const Finish &finish, int patienceMs);
    void hold(const Request &request, int patienceMs);
    void sendNow(const Request &request);
    void answer(quint64 number, sdbus::MethodReply &reply, const sdbus::Error *error);

    BusConnection m_connection;
    /// Between its signals: while it tells that the bus is lost, the connection still stands.
    bool m_isConnected = false;
    State m_state = State::Untried;
    QString m_reason;
    CMError m_busError; ///< of requests while there is no connection
    int m_patienceMs;
    PendingRequests m_pending;
    std::vector<Request> m_held; ///< of those, until the bus has been tried
    // What belongs to the connection of the moment.
    std::string m_owner; ///< the host's unique name; empty for none
    std::vector<BusSlot> m_matches;
};

template <typename T>
CMReply<T> ClientBus::ask(const HostInterface &interface, const char *method, const Write &write,
                          const std::function<T(sdbus::MethodReply &)> &read)
{
    CMReply<T> reply;
    send(this, interface, method, write,
         [reply, read](sdbus::MethodReply *answer, const CMError &error) {
             if (answer == nullptr) {
                 reply.setError(error);
             } else {
                 reply.setValue(read(*answer));
             }
         });
    return reply;
}
