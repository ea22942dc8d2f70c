// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusConnection.h"
#include "bus/BusReader.h"
#include "bus/BusWriter.h"
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

/// Sends requests to the host, reads its signals and tracks whether it is on the bus. Shared by the
/// client's classes.
///
/// Lives in the thread that made it. Each request is finished once, from the event loop or from the
/// destructor.
class ClientBus : public QObject
{
    Q_OBJECT

public:
    /// Writes a request's arguments. A BusError becomes the request's error.
    using Write = std::function<void(BusWriter &call)>;
    using Finish = PendingRequests::Finish;

    // Interfaces besides those of BusInterface.
    static const BusInterface &properties();
    static const BusInterface &bus(); ///< the bus's own

    explicit ClientBus(const QString &bus);
    ~ClientBus() override;

    bool isAvailable() const { return m_state == State::Available; }
    QString unavailableReason() const { return m_reason; }
    void setTimeout(int milliseconds) { m_timeoutMs = milliseconds; }

    /// The request is not finished when the context has been deleted. The interface must outlive it.
    void send(QObject *context, const BusInterface &interface, const char *method,
              const Write &write, const Finish &finish);

    /// Has the signals of messages emitted from now on. Others need not wake up for them.
    void followMessages();

    /// Sends a request and reads its reply.
    template <typename T>
    CMReply<T> ask(const BusInterface &interface, const char *method, const Write &write,
                   const std::function<T(BusReader &reply)> &read);

Q_SIGNALS:
    void availableChanged(bool available);
    void valueChanged(const CMPath &path, const QVariant &value);
    void rowsChanged(const CMPath &path, const QStringList &changes, int first, int count);
    void nodeChanged(const CMPath &path, bool published);
    void received(const CMPath &inbox, const QVariant &value);
    void dropped(const CMPath &path, uint count);
    void messageClosed(uint id, uint reason);
    void actionInvoked(uint id, const QString &key);

private Q_SLOTS:
    void on_connection_connected();
    void on_connection_lost(const QString &reason, bool isSilent);

private:
    /// NoBus: there is no connection, or the bus does not reply.
    enum class State { Untried, NoBus, NoHost, Available };

    struct Request
    {
        quint64 number;
        const BusInterface *interface;
        const char *method;
        Write write;
    };

    void followHost();
    void match(const std::string &rule, void (ClientBus::*handler)(const BusMessage &));
    void matchSignals(const BusInterface &interface,
                      void (ClientBus::*handler)(const BusMessage &));
    /// Whether the host sent the signal. The match rule for the host's name does not prove it:
    /// signals that a program sends directly to this one arrive regardless of match rules.
    bool isFromHost(const BusMessage &signal) const;
    void on_owner_changed(const BusMessage &signal);
    void on_model_signal(const BusMessage &signal);
    void on_messages_signal(const BusMessage &signal);
    void setState(State state, const QString &reason);

    void send(QObject *context, const BusInterface &interface, const char *method,
              const Write &write, const Finish &finish, int timeoutMs);
    void hold(const Request &request, int timeoutMs);
    void sendNow(const Request &request);
    void finish(quint64 number, const BusMessage &reply);

    BusConnection m_connection;
    /// False during the connection's lost() signal, while the connection itself still exists.
    bool m_isConnected = false;
    bool m_followsMessages = false;
    State m_state = State::Untried;
    QString m_reason;
    CMError m_busError; ///< the error of requests while there is no connection
    int m_timeoutMs;
    PendingRequests m_pending;
    std::vector<Request> m_held; ///< pending requests that wait until the bus has been tried
    // For the current connection:
    std::string m_owner; ///< the host's unique name; empty for none
    std::vector<BusSlot> m_matches;
};

template <typename T>
CMReply<T> ClientBus::ask(const BusInterface &interface, const char *method, const Write &write,
                          const std::function<T(BusReader &reply)> &read)
{
    CMReply<T> result;
    send(this, interface, method, write, [result, read](const Result<BusMessage, CMError> &reply) {
        if (const auto *error = std::get_if<CMError>(&reply)) {
            result.setError(*error);
        } else {
            BusReader reader(std::get<BusMessage>(reply));
            result.setValue(read(reader));
        }
    });
    return result;
}
