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
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <vector>

/// Keeps the urgent sounds of one user from making those of another wait. The player plays them in the
/// order of their arrival, however long they are. So a sound that has not started makes the one that plays
/// give way if that one's user has clearly played more of late than its own user, and those that wait before it if
/// theirs have played more at all. It also does when it has waited for long, and none of its user has started
/// meanwhile: then everybody gets a short turn.
///
/// A sound that has given way comes back when its user has no other one that waits with the player. So however
/// many wait, only a few of each user have to give way, and each of the others has to do it once.
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

    /// The player has an urgent sound, by its response path, that was sent with this number. If there
    /// are many users, it may have to give way at once. The charge must exist until remove().
    void add(const CMPath &sound, const Quotas::Charge &charge, std::uint64_t number,
             bool hasStarted, bool hasManyUsers);

    /// The sound has started, if it is one of these.
    void start(const CMPath &sound);

    /// The player could not play the sound, if it is one of these. The time for which it tried counts.
    void fail(const CMPath &sound);

    /// The sound is cancelled, if it is one of these. The time for which the player tried to play it counts.
    void cancel(const CMPath &sound);

    /// The sound has ended, or takes no turns any more, if it is one of these.
    void remove(const CMPath &sound);

    /// To be called when a client's user has become known.
    void takeUsers();

    /// Whether some that have given way have not come back.
    bool isAnyWaiting() const { return !m_waiting.empty(); }

Q_SIGNALS:
    /// The sound must be taken from the player until it comes back.
    void gaveWay(const CMPath &sound);

    /// The sound must be sent to the player again; add() or remove() follows.
    void cameBack(const CMPath &sound);

private Q_SLOTS:
    void on_timer_timeout() { arrange(); }
    void on_returnTimer_timeout();

private:
    using Clock = RecentTime::Clock;
    using Seconds = RecentTime::Seconds;

    struct Sound
    {
        const Quotas::Charge *charge;
        std::uint64_t number; ///< in the order in which they were sent
        std::uint64_t place;  ///< the first number
        Clock::time_point added;
        Clock::time_point firstAdded;
        bool hasPlayed; ///< and has given way
        std::optional<Clock::time_point> started;
    };

    /// The order in which those of one user come back: first what has not played, then by the first number.
    using Place = std::pair<bool, std::uint64_t>;

    /// One that has given way.
    struct Waiting
    {
        const Quotas::Charge *charge;
        Place place;
        Clock::time_point firstAdded;
        Quotas::UserId user; ///< under which it is in m_places
        bool hasComeBack = false;
    };

    /// How long the urgent sounds of a user have kept the player busy of late. Who has kept others waiting comes
    /// after them; only among equals does other time count, so that nobody waits for having played alone.
    struct Time
    {
        Seconds whileOthersWaited{0};
        Seconds all{0};

        bool operator<(const Time &other) const
        {
            return std::tie(whileOthersWaited, all) < std::tie(other.whileOthersWaited, other.all);
        }
    };
    struct RecentTimes
    {
        RecentTime whileOthersWaited;
        RecentTime all;
        Clock::time_point lastStart{};
    };
    using Users = std::map<Quotas::UserId, Time>;

    void arrange();
    void giveWay(const CMPath &sound);
    void leavePlayer(const CMPath &sound);
    bool hasTooMany(const CMPath &sound) const;
    Users playedNow() const;
    static Time timeOf(const Users &played, Quotas::UserId user);
    const Sound *nextInTurn(const Users &played) const;
    bool hasWaitedLong(const Sound &sound) const;
    Seconds margin() const;
    void takePresent();
    std::vector<CMPath> thoseBefore(const Sound &next, const Users &played) const;

    std::unordered_map<CMPath, Sound, PathHash> m_sounds; ///< with the player
    std::unordered_map<CMPath, Waiting, PathHash> m_waiting;
    /// Those of m_waiting that have not come back, in the order in which they do. None is empty.
    std::map<Quotas::UserId, std::map<Place, CMPath>> m_places;
    std::map<Quotas::UserId, RecentTimes> m_played; ///< without what plays now
    std::optional<Clock::time_point>
        m_othersWaitSince;                   ///< while several users have sounds with the player
    std::size_t m_users = 0;                 ///< that have sounds with the player
    std::optional<Quotas::UserId> m_playing; ///< whose sound plays
    std::uint64_t m_lastNumber = 0;
    Clock::time_point m_lastEnd; ///< of a sound that kept the player busy
    QTimer
        m_timer; ///< runs while a sound waits, since the one that plays may have to give way later
    QTimer m_returnTimer; ///< runs when sounds may come back
};
