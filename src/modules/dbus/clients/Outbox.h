// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <bus/BusCalls.h>
#include <bus/BusMessage.h>
#include <bus/BusPace.h>

#include <QObject>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

class BusConnection;
class Quotas;

/// Sends messages to clients in turn, so that what is sent to one client does not delay what is sent
/// to the others: a bus reads from the host slowly, in the order in which it was sent. What has been
/// sent to a client costs it turns. The messages to one client stay in order. What is large waits until
/// the bus can read it soon. Messages to a user on whom less time was spent than on all that wait do not
/// wait.
///
/// Owned by Clients, used in the worker's thread. Throws nothing: what can't be sent is logged.
class Outbox : public QObject
{
    Q_OBJECT

public:
    /// Makes a message that is sent in place of another one. Throws a BusError on error.
    using Instead = std::function<BusMessage()>;

    Outbox(BusConnection &bus, Quotas &quotas);

    /// Sends a reply or a signal of about this many bytes. Of a sealed signal, a copy goes to the client. Other
    /// messages go to their destination, or without one to everyone, after what was sent to the client before.
    /// If a message is large and the bus stays too busy for it, a short one is made and sent in its place.
    void send(const std::string &client, const BusMessage &message, std::size_t bytes,
              Instead instead = {});

    /// Calls the bus itself, after what was sent to the client before. See BusCalls::send().
    void call(const std::string &client, const BusMessage &call, std::chrono::microseconds timeout,
              const BusCalls::Handler &handler);

    /// The client has left. What it would have been sent is dropped.
    void forget(const std::string &client);

    /// Whether more messages wait than the bus reads in a moment.
    bool isBackedUp() const;

    /// Whether the bus takes the messages to this client more slowly than they come.
    bool isLate(const std::string &client) const;

    /// Hands over everything to the bus, before the host stops.
    void sendAll();

    /// The bus has gone.
    void clear()
    {
        m_waiting.clear();
        m_count = 0;
    }

private Q_SLOTS:
    void on_bus_turned();
    void on_pace_changed();

private:
    using Clock = std::chrono::steady_clock;

    struct Letter
    {
        BusMessage message;
        std::size_t bytes;
        Instead instead{};
        Clock::time_point added = Clock::now();
        std::chrono::microseconds timeout{};
        BusCalls::Handler handler{}; ///< of a call
        std::optional<Clock::time_point>
            tooLate{}; ///< when it is given up, once it is the next one
    };
    using Waiting = std::unordered_map<std::string, std::deque<Letter>>;

    void add(const std::string &client, Letter letter);
    bool isNext(const std::string &client);
    void countTime(const std::string &client, const Letter &letter);
    void sendSome();
    void sendNext(Waiting::iterator client);
    void post(const std::string &client, const Letter &letter);
    bool isSendable(Letter &letter);
    bool isGivenUp(const Letter &letter);

    /// The end when nothing can be sent now.
    Waiting::iterator next();

    BusConnection &m_bus;
    Quotas &m_quotas;
    BusPace m_pace;
    Waiting m_waiting;       ///< by client; none is empty
    std::size_t m_count = 0; ///< of the letters that wait
};
