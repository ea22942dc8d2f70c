// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Quotas.h"
#include <bus/BusMessage.h>
#include <core/tavo.h>

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>

class BusWriter;
class Clients;

/// Calls that wait for a reply of the model. Each is answered when its reply is finished. When a client
/// leaves, its calls are forgotten.
///
/// Modules handle requests in the order in which they come. So that the requests of one user do not keep
/// those of others waiting there, its further calls are held back while some of them wait that were sent
/// only a moment ago. Requests that wait for longer are not in a module's way.
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

    /// So many calls of a user, sent a moment ago, keep a module busy.
    static constexpr int maxRecent = 16;

    /// Answers the call with the reply's value or error, at once if the reply is finished. While it is recent, it
    /// counts as this many calls.
    void answer(const BusMessage &call, const CMReply<QVariant> &reply, const Write &write,
                Quotas::Charge charge, int weight = 1);

    /// Forgets all calls, because the bus has gone.
    void clear();

private Q_SLOTS:
    void on_clients_left(const std::string &client);
    void on_timer_timeout();

private:
    using Clock = std::chrono::steady_clock;

    struct PendingCall
    {
        BusMessage call;
        Write write;
        Quotas::Charge charge;
        Clock::time_point sent;
        Quotas::UserId user; ///< when it was sent
        int weight;
        bool isRecent = true;
    };
    using Calls = std::map<quint64, PendingCall>; ///< in the order in which they were sent

    bool isHeldBack(const std::string &client) const;
    void finish(quint64 number, const CMReply<QVariant> &reply);
    Calls::iterator erase(Calls::iterator pending);
    void settle(PendingCall &pending);
    void send(const BusMessage &call, const CMReply<QVariant> &reply, const Write &write);

    Clients &m_clients;

    /// Not kept by the watchers of replies: those may be destroyed in any thread, a message may not.
    Calls m_calls;
    quint64 m_lastNumber = 0;
    quint64 m_firstRecent = 1;              ///< none before it is recent
    std::map<Quotas::UserId, int> m_recent; ///< how many are, by user
    QTimer m_timer;                         ///< runs while some are
};
