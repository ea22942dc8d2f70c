// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ClientLimits.h"
#include "Quotas.h"
#include <bus/BusError.h>
#include <bus/BusMessage.h>

#include <QObject>
#include <QTimer>

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

class BusConnection;

/// Has the calls of clients handled in turn, so that many calls of one client do not keep the others
/// waiting. The next one is always a call of the user whose clients have taken the least time of late;
/// among these, of the client that will have taken the least time after it. The calls of one client are
/// handled in their order.
///
/// Owned by Clients, used in the worker's thread. Calls are handled once all that have arrived are read,
/// and some of them before if that takes long, a few milliseconds in each turn of the event loop. In a flood,
/// a fifth of the time is for handling: other clients' calls stand behind the flood until it is read.
class CallTurns : public QObject
{
    Q_OBJECT

    using Clock = std::chrono::steady_clock;

public:
    using Handler = std::function<void(const BusMessage &call)>;
    using Seconds = Quotas::Seconds;

    /// What a call does. Only those with a lasting effect are still handled when their client has left.
    enum class Effect {
        Reply,    ///< none but the reply
        OfClient, ///< ends with the client
        Lasting   ///< stays when the client leaves
    };

    /// A method that clients call.
    struct Method
    {
        Effect effect;
        Handler handler; ///< throws nothing
        Seconds takes{}; ///< about how long a call takes
    };

    /// Whether calls of this client can be handled now. Asked again whenever the bus has turned, and by
    /// resume().
    using IsReady = std::function<bool(const std::string &client)>;

    /// The limits may change.
    CallTurns(BusConnection &bus, Quotas &quotas, const ClientLimits &limits, IsReady isReady);

    /// Has the call of the client handled soon. The method must stay while there is a bus. Throws
    /// BusError::limitExceeded() when too many calls wait already; then also for the client's further calls, until
    /// those that wait are handled; and when many large ones of the client's user have come of late, unless all are of
    /// one user. They are not even read, because a flood must cost little.
    void add(const std::string &client, const BusMessage &call, Method &method);

    /// Has a call handled again from its beginning, before the client's other calls. Throws
    /// BusError::limitExceeded() if there is no room for it.
    void putBack(const std::string &client, const BusMessage &call, Method &method);

    /// The client has left. False while calls of it are still to be handled; left() follows then. If many
    /// clients of its user have left before theirs were handled, its calls are dropped.
    bool leave(const std::string &client);

    /// Calls of some clients may have become ready.
    void resume();

    /// The bus has gone.
    void clear();

    /// Calls the function and counts the time for the client. The time of nested calls counts once.
    template <typename Function>
    void spend(const std::string &client, const Function &function)
    {
        if (m_isSpending) {
            return function();
        }
        m_isSpending = true;
        const Clock::time_point start = Clock::now();
        function();
        m_quotas.addTime(client, Clock::now() - start);
        m_isSpending = false;
    }

Q_SIGNALS:
    void left(const std::string &client);

private Q_SLOTS:
    void on_bus_turned();
    void on_timer_timeout();

private:
    struct Call
    {
        BusMessage message;
        Method *method;
        Quotas::Charge charge;
        bool isMeasured;
    };
    struct Client
    {
        std::deque<Call> calls;
        bool hasLeft = false;
        std::optional<BusError>
            refusal{};         ///< of all further calls until those that wait are handled
        Quotas::UserId user{}; ///< once it has left
    };
    using Waiting = std::unordered_map<std::string, Client>;

    Client &waitingOf(const std::string &client);
    Quotas::Charge chargeFor(const std::string &client, const BusMessage &call);
    Quotas::Cost costOf(const std::string &client, const BusMessage &call);
    std::size_t measure(const std::string &client, const BusMessage &call);
    bool isFlooded() const;
    void handleSome();
    void startTimer();
    void handle(Waiting::iterator client);
    Waiting::iterator next();

    BusConnection &m_bus;
    Quotas &m_quotas;
    const ClientLimits &m_limits;
    const IsReady m_isReady;
    Waiting m_waiting;          ///< by name; each has calls
    Waiting::node_type m_spare; ///< an entry without calls, for the next client that has none
    std::map<Quotas::UserId, int> m_left; ///< how many of these clients have left
    bool m_isSpending = false;
    Clock::time_point m_nextTurn{}; ///< unless there is nothing to read
    bool m_hasCome = false;         ///< a call, in this turn of the bus
    QTimer m_timer;                 ///< runs while calls are left for the next turn
};
