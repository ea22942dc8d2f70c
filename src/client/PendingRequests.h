// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "bus/BusMessage.h"
#include "client/HostError.h"
#include <core/model/cmerror.h>

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <chrono>
#include <functional>
#include <map>

/// Requests that wait for their replies, by number. Each is finished once, unless its context has been
/// deleted.
class PendingRequests : public QObject
{
    Q_OBJECT

public:
    using Finish = std::function<void(const Result<BusMessage, CMError> &reply)>;

    /// Call this before sending the request: its timeout starts here.
    quint64 add(QObject *context, const Finish &finish, int timeoutMs);

    /// The rest of a request's timeout, at least a millisecond.
    std::chrono::milliseconds timeLeft(quint64 number) const;

    /// Finishes a request with a reply or an error reply. If the timeout is over, the error blames the
    /// suspect.
    void finish(quint64 number, const BusMessage &reply, Silent suspect);

    /// Fails a request from the event loop.
    void failLater(quint64 number, const CMError &error);

    /// Fails all requests, except those that are added meanwhile.
    void failAll(const CMError &error);

private:
    struct Request
    {
        QPointer<QObject> context;
        Finish finish;
        int timeoutMs;
        QElapsedTimer since;
    };

    Request take(quint64 number);

    quint64 m_lastNumber = 0;
    std::map<quint64, Request> m_requests;
};
