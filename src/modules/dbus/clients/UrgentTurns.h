// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "PathHash.h"
#include "Quotas.h"
#include "RecentTime.h"
#include <core/tavo.h>

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

/// Keeps the urgent sounds of one user from making those of another wait. The player plays them in the
/// order of their arrival, however long they are. So a sound that has not started makes the one that plays
/// give way if that one's user has clearly played more of late than its own user, and those that wait before it if
/// theirs have played more at all.
///
/// Owned by ClientSounds, used in the worker's thread. Clients whose user is not known count as one
/// user.
class UrgentTurns : public QObject
{
    Q_OBJECT

public:
    UrgentTurns();

    /// The number of a sound that is sent to the player now, or to a module that passes it on.
    std::uint64_t nextTurn() { return ++m_lastNumber; }

    /// The player has an urgent sound, by its response path, that was sent with this number. The charge must
    /// exist until remove().
    void add(const CMPath &sound, const Quotas::Charge &charge, std::uint64_t number,
             bool hasStarted);

    /// The sound has started, if it is one of these.
    void start(const CMPath &sound);

    /// The player could not play the sound, if it is one of these. The time for which it tried counts.
    void fail(const CMPath &sound);

    /// The sound is cancelled, if it is one of these. The time for which the player tried to play it counts.
    void cancel(const CMPath &sound);

    /// The sound has ended or given way, if it is one of these.
    void remove(const CMPath &sound);

    /// To be called when a client's user has become known.
    void arrange();

Q_SIGNALS:
    /// The sound must be taken from the player, and play again later. remove() has been called for it.
    void gaveWay(const CMPath &sound);

private Q_SLOTS:
    void on_timer_timeout() { arrange(); }

private:
    using Clock = RecentTime::Clock;
    using Seconds = RecentTime::Seconds;

    struct Sound
    {
        const Quotas::Charge *charge;
        std::uint64_t number; ///< in the order in which they were sent
        Clock::time_point added;
        std::optional<Clock::time_point> started;
    };

    using Users = std::map<Quotas::UserId, Seconds>;

    Users playedNow() const;
    const Sound *nextInTurn(const Users &played) const;
    Seconds margin() const;
    std::vector<CMPath> thoseBefore(const Sound &next, const Users &played) const;

    std::unordered_map<CMPath, Sound, PathHash> m_sounds; ///< with the player
    /// How long a user's urgent sounds have kept the player busy, without what plays now.
    std::map<Quotas::UserId, RecentTime> m_played;
    std::uint64_t m_lastNumber = 0;
    Clock::time_point m_lastEnd; ///< of a sound that kept the player busy
    QTimer
        m_timer; ///< runs while a sound waits, since the one that plays may have to give way later
};
