// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Quotas.h"
#include <core/tavo.h>

#include <QObject>
#include <QTimer>

#include <chrono>
#include <map>

/// How long the requests that users have sent of late are expected to keep modules busy. Modules handle requests in the
/// order in which they come. So that those of one user do not keep others' waiting there, its further calls are held back
/// while it is full.
///
/// Owned by Clients, used in the worker's thread.
class ModuleLoad : public QObject
{
    Q_OBJECT

public:
    using Time = std::chrono::microseconds;

    /// What a request is expected to take if nothing else is known.
    static constexpr Time usual{1250};

    ModuleLoad();

    /// A user has sent a request. It counts until it is removed, but for 0.2 s at most: those that wait for longer
    /// are not in a module's way. Returns its number.
    quint64 add(Quotas::UserId user, Time takes);
    void remove(quint64 number);

    /// A user has sent a request that the module for attention replies to as soon as it has handled it. It counts until
    /// then, but for a second at most, by what others have taken of late: people may have given the module rules that
    /// take long.
    void addForAttention(Quotas::UserId user, const CMReply<QVariant> &reply);

    /// Whether the user has sent half of what the others leave.
    bool isFull(Quotas::UserId user) const;

Q_SIGNALS:
    /// A user may no longer be full.
    void fell();

private Q_SLOTS:
    void on_timer_timeout();

private:
    using Clock = std::chrono::steady_clock;

    struct Request
    {
        Quotas::UserId user;
        Time takes;
        Clock::time_point until;
    };
    using Requests = std::map<quint64, Request>;

    quint64 add(Quotas::UserId user, Time takes, Clock::duration atMost);
    Requests::iterator erase(Requests::iterator request);
    void finish(quint64 number, Clock::time_point sent);
    Time expectedOfAttention(Clock::time_point now) const;

    Requests m_requests; ///< by number
    quint64 m_lastNumber = 0;
    std::map<Quotas::UserId, Time> m_loads; ///< none is 0
    Time m_total{0};
    Time m_longest{0}; ///< request that the module for attention has handled of late
    Clock::time_point m_longestSet;
    Clock::time_point m_lastHandled; ///< by it
    QTimer m_timer;                  ///< runs while there are requests
};
