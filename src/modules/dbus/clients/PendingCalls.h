// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Quotas.h"

#include <bus/BusMessage.h>
#include <core/tavo.h>

#include <QObject>

#include <cstddef>
#include <string>
#include <unordered_map>

class BusWriter;
class Clients;

/// Calls from the bus whose answers come out of the model: each is answered when the model's reply
/// is there, and nothing waits for it. Those of a client that leaves are forgotten.
///
/// Thread and owner: its worker's.
class PendingCalls : public QObject
{
    Q_OBJECT

public:
    explicit PendingCalls(Clients &clients);

    /// Writes a reply's value into the answer.
    using Write = void (*)(BusWriter &answer, const QVariant &value);

    /// Counts a call, whose values take so many bytes, among those that wait. Throws
    /// BusError::limitExceeded() when too much waits already.
    Quotas::Charge charge(const BusMessage &call, std::size_t bytes);

    /// Answers the call with the reply, or its error; now if the reply is finished.
    void answer(const BusMessage &call, const CMReply<QVariant> &reply, Write write,
                Quotas::Charge charge);

    /// Forgets all calls: the bus that they came from has gone.
    void clear();

private Q_SLOTS:
    void on_clients_left(const std::string &client);

private:
    struct PendingCall
    {
        BusMessage call;
        Write write;
        Quotas::Charge charge;
    };
    using Calls = std::unordered_map<quint64, PendingCall>;

    void finish(quint64 number, const CMReply<QVariant> &reply);
    void send(const BusMessage &call, const CMReply<QVariant> &reply, Write write);

    Clients &m_clients;

    /// Here and not with the replies' watchers: those may go in any thread, a message must not.
    Calls m_calls;
    quint64 m_lastNumber = 0;
};
