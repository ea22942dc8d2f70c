// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

/// The urgent messages that clients have left behind and that would stay on display for long. Each gives
/// way to the next message of the same priority: it is queued anew, with the priority below. Otherwise
/// a client could leave a message that stands before all alarms for ever.
///
/// Owned by Clients, used in the worker's thread. A message gives way once, so however many there are,
/// each costs little. At most 100 give way every 5 ms, so that nobody waits for all of them.
class LeftMessages : public QObject
{
    Q_OBJECT

public:
    LeftMessages();

    using Priority = TavoNotificationItemPriority::Enum;
    using GiveWay = std::function<void()>;

    struct Leave
    {
        using Key = std::pair<int, std::uint64_t>; ///< priority and number
        void operator()(LeftMessages *messages) const;
        Key key;
    };

    /// A message that has been left behind, until it is destroyed. Must not outlive the messages.
    using Place = std::unique_ptr<LeftMessages, Leave>;

    /// Whether such a message gives way once its client has left.
    static bool givesWay(Priority priority, int timeoutMs);

    /// The priority of a message that has given way.
    static Priority below(Priority priority);

    /// A client has left the message. The function queues it anew.
    Place add(Priority priority, GiveWay giveWay);

    /// Another message with this priority has come.
    void makeWay(Priority priority);

private Q_SLOTS:
    void on_turnTimer_timeout();

private:
    std::map<Leave::Key, GiveWay> m_messages;
    std::map<int, std::uint64_t> m_giving; ///< the last number that gives way, by priority
    QTimer m_turnTimer;
    std::uint64_t m_lastNumber = 0;
};
