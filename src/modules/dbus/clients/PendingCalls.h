// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ModuleLoad.h"
#include "Quotas.h"
#include <bus/BusMessage.h>
#include <core/tavo.h>

#include <QObject>

#include <cstddef>
#include <functional>
#include <map>
#include <string>

class BusWriter;
class Clients;

/// Calls that wait for a reply of the model. Each is answered when its reply is finished. When a client
/// leaves, its calls are forgotten.
///
/// Owned by ModelInterface, used in its thread.
class PendingCalls : public QObject
{
    Q_OBJECT

public:
    explicit PendingCalls(Clients &clients);

    /// Writes the value of the model's reply.
    using Write = std::function<void(BusWriter &reply, const QVariant &value)>;

    /// Counts a waiting call by the bytes of its values. Throws BusError::limitExceeded() when too much
    /// waits already.
    Quotas::Charge charge(const BusMessage &call, std::size_t bytes);

    /// Answers the call with the reply's value or error, at once if the reply is finished. The module is expected to
    /// take this long.
    void answer(const BusMessage &call, const CMReply<QVariant> &reply, const Write &write,
                Quotas::Charge charge, ModuleLoad::Time takes = ModuleLoad::usual);

    /// Forgets all calls, because the bus has gone.
    void clear();

private Q_SLOTS:
    void on_clients_left(const std::string &client);

private:
    struct PendingCall
    {
        BusMessage call;
        Write write;
        Quotas::Charge charge;
        quint64 load; ///< its number in ModuleLoad
    };
    using Calls = std::map<quint64, PendingCall>; ///< in the order in which they were sent

    void finish(quint64 number, const CMReply<QVariant> &reply);
    void send(const BusMessage &call, const CMReply<QVariant> &reply, const Write &write);

    Clients &m_clients;

    /// Not kept by the watchers of replies: those may be destroyed in any thread, a message may not.
    Calls m_calls;
    quint64 m_lastNumber = 0;
};
