// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QObject>

#include <sdbus-c++/sdbus-c++.h>

#include <cstddef>
#include <string>
#include <unordered_map>

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

    /// Puts a reply's value into the answer, and says about how many bytes that are.
    using Append = std::size_t (*)(sdbus::MethodReply &answer, const QVariant &value);

    /// Throws BusErrors::limitExceeded() unless a call whose values take so many bytes may wait. No
    /// client's may take more of what there is for all than is left for the others'.
    void checkRoom(const sdbus::MethodCall &call, std::size_t bytes) const;

    /// Answers the call with the reply, or its error; now if the reply is finished.
    void answer(const sdbus::MethodCall &call, const CMReply<QVariant> &reply, Append append,
                std::size_t bytes);

    /// Forgets all calls: the bus that they came from has gone.
    void clear();

private Q_SLOTS:
    void on_clients_left(const std::string &client);

private:
    struct PendingCall
    {
        sdbus::MethodCall call;
        Append append;
        std::size_t bytes;
    };
    using Calls = std::unordered_map<quint64, PendingCall>;

    void release(const PendingCall &pending);
    void finish(quint64 number, const CMReply<QVariant> &reply);
    void send(const sdbus::MethodCall &call, const CMReply<QVariant> &reply, Append append);

    Clients &m_clients;

    /// Here and not with the replies' watchers: those may go in any thread, a message must not.
    Calls m_calls;
    std::size_t m_bytes = 0;                               ///< of all
    std::unordered_map<std::string, std::size_t> m_shares; ///< of each client that has any
    quint64 m_lastNumber = 0;
};
