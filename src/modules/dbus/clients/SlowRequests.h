// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Quotas.h"
#include "RecentTime.h"
#include <core/tavo.h>

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <string>

class Clients;

/// Requests that take a module long: one after the other, the next is that of the user whose requests have taken the
/// least time of late. Modules handle requests in the order in which they come, so many would keep everybody's
/// waiting there. The next one is also sent if a reply takes half a second.
///
/// Used in the worker's thread.
class SlowRequests : public QObject
{
    Q_OBJECT

public:
    using Send = std::function<CMReply<QVariant>()>;

    explicit SlowRequests(Clients &clients);

    /// How many requests of the client have no reply yet.
    std::size_t count(const std::string &client) const;

    /// Calls the function when it is the request's turn, unless the client has left. Returns the reply to it.
    CMReply<QVariant> add(const std::string &client, const Send &send);

    /// The same, but also when the client has left.
    CMReply<QVariant> addForGood(Quotas::UserId user, const Send &send);

private Q_SLOTS:
    void on_clients_left(const std::string &client);
    void goOn();

private:
    using Clock = RecentTime::Clock;
    struct Request
    {
        std::string client; ///< that it ends with; may be empty
        Quotas::UserId user;
        Send send;
        CMReply<QVariant> reply;
        Clock::time_point sent;
    };
    using Requests = std::deque<Request>;

    CMReply<QVariant> add(Request request);
    void sendNext();
    Request takeNext();
    void finish(quint64 number, const CMReply<QVariant> &finished);

    Clients &m_clients;
    std::map<Quotas::UserId, Requests> m_waiting; ///< none is empty
    std::map<quint64, Request> m_sent;            ///< that have no reply, by number
    quint64 m_lastNumber = 0;
    quint64 m_current = 0; ///< the next one waits for this one's reply; 0: for none
    bool m_isSending = false;
    QTimer m_patience;
    std::map<Quotas::UserId, RecentTime> m_times;
};
