// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Quotas.h"
#include <core/tavo.h>

#include <QObject>

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <string>

class Clients;

/// Requests that take a module long: of each user, one after the other. Modules handle requests in the order
/// in which they come, so the many of one user would keep everybody's waiting there.
///
/// Used in the worker's thread. When a client leaves, those of its requests that have not been sent are
/// dropped.
class SlowRequests : public QObject
{
    Q_OBJECT

public:
    using Send = std::function<CMReply<QVariant>()>;

    explicit SlowRequests(Clients &clients);

    /// How many requests of the client have no reply yet.
    std::size_t count(const std::string &client) const;

    /// Calls the function when it is the request's turn. Returns the reply to it.
    CMReply<QVariant> add(const std::string &client, const Send &send);

private Q_SLOTS:
    void on_clients_left(const std::string &client);

private:
    struct Request
    {
        std::string client;
        Send send;
        CMReply<QVariant> reply;
    };
    using Requests = std::deque<Request>;

    void sendFirst(Quotas::UserId user);
    void finishFirst(Quotas::UserId user, const CMReply<QVariant> &finished);

    Clients &m_clients;
    std::map<Quotas::UserId, Requests>
        m_requests; ///< none is empty; the first one of each has been sent
};
