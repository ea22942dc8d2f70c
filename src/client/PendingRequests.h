// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "client/HostError.h"

#include <core/model/cmerror.h>

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <functional>
#include <map>

/// Requests that wait for their answers, by numbers. Each is finished once, and not any more when
/// its context is gone.
class PendingRequests : public QObject
{
    Q_OBJECT

public:
    /// Takes the answer, which is null in case of an error.
    using Finish = std::function<void(sdbus::MethodReply *, const CMError &)>;

    /// To be called before the request is sent: the time that its answer takes counts from here.
    quint64 add(QObject *context, const Finish &finish, int patienceMs);

    /// What is left of the time that the request's answer may take; not nothing.
    std::chrono::milliseconds timeLeft(quint64 number) const;

    /// Finishes a request with what came from the bus. Where that is that nobody answered in time, it
    /// was the suspect.
    void answer(quint64 number, sdbus::MethodReply &reply, const sdbus::Error *error,
                Silent suspect);

    /// Finishes a request from the event loop.
    void failLater(quint64 number, const CMError &error);

    /// Finishes all that there are. What is added meanwhile is left.
    void failAll(const CMError &error);

private:
    struct Request
    {
        QPointer<QObject> context;
        Finish finish;
        int patienceMs;
        QElapsedTimer since;
    };

    Request take(quint64 number);

    quint64 m_lastNumber = 0;
    std::map<quint64, Request> m_requests;
};
