// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "UrgentTurns.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {
/// How much more a user must have played, so that short sounds play to their end.
constexpr std::chrono::duration<double> maxMargin(0.2);

/// The same for all users together: the more there are, the sooner each gives way.
constexpr std::chrono::duration<double> maxOfAll(0.7);

/// Passes between the end of a turn and the next sound.
constexpr std::chrono::duration<double> change(0.03);

/// However many users there are, a little of each sound is heard.
constexpr std::chrono::duration<double> minMargin(0.005);

/// Then a sound has waited for long; less for each user, as all of them may have one.
constexpr std::chrono::duration<double> longWait(0.9);
constexpr std::chrono::duration<double> lessForEach(0.02);
constexpr std::chrono::duration<double> minLongWait(0.3);

constexpr std::chrono::milliseconds interval(20);

/// Of one user, with the player.
constexpr int maxSounds = 16;
} // namespace

UrgentTurns::UrgentTurns()
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(interval);
    tavoConnect(&m_timer, &QTimer::timeout, this, &UrgentTurns::on_timer_timeout);
    m_returnTimer.setSingleShot(true);
    tavoConnect(&m_returnTimer, &QTimer::timeout, this, &UrgentTurns::on_returnTimer_timeout);
}

void UrgentTurns::add(const CMPath &sound, const Quotas::Charge &charge, std::uint64_t number,
                      bool hasStarted, bool hasManyUsers)
{
    const Clock::time_point now = Clock::now();
    Sound added{&charge, number, number, now, now, false, {}};
    const auto waiting = m_waiting.find(sound);
    const bool comesBack = waiting != m_waiting.end();
    if (comesBack) {
        std::tie(added.hasPlayed, added.place) = waiting->second.place;
        added.firstAdded = waiting->second.firstAdded;
        m_waiting.erase(waiting);
    }
    m_sounds.emplace(sound, added);
    takePresent();
    if (hasStarted) {
        start(sound);
    } else if (hasManyUsers && !comesBack && hasTooMany(sound)) {
        giveWay(sound);
    }
    arrange();
}

/// Whether others of its user come before it.
bool UrgentTurns::hasTooMany(const CMPath &sound) const
{
    const auto user = m_sounds.at(sound).charge->user();
    const auto places = m_places.find(user);
    if (places != m_places.end() && !places->second.begin()->first.first) {
        return true;
    }
    const auto isOfUser = [&user](const auto &entry) {
        return entry.second.charge->user() == user;
    };
    return std::count_if(m_sounds.begin(), m_sounds.end(), isOfUser) > maxSounds;
}

void UrgentTurns::start(const CMPath &sound)
{
    const auto found = m_sounds.find(sound);
    if (found != m_sounds.end() && !found->second.started) {
        // The player opens it first, which may take long.
        found->second.started = std::max(found->second.added, m_lastEnd);
        m_played[found->second.charge->user()].lastStart = Clock::now();
        m_returnTimer.start(0);
    }
}

void UrgentTurns::cancel(const CMPath &sound)
{
    const bool isOnePlaying = std::any_of(m_sounds.begin(), m_sounds.end(), [](const auto &entry) {
        return entry.second.started.has_value();
    });
    if (isOnePlaying) {
        remove(sound);
    } else {
        fail(sound); // The player may be opening it.
    }
}

void UrgentTurns::fail(const CMPath &sound)
{
    start(sound);
    remove(sound);
}

void UrgentTurns::remove(const CMPath &sound)
{
    leavePlayer(sound);
    const auto waiting = m_waiting.find(sound);
    if (waiting == m_waiting.end()) {
        return;
    }
    const auto places = m_places.find(waiting->second.user);
    if (places != m_places.end()) {
        places->second.erase(waiting->second.place);
        if (places->second.empty()) {
            m_places.erase(places);
        }
    }
    m_waiting.erase(waiting);
    m_returnTimer.start(0);
}

void UrgentTurns::leavePlayer(const CMPath &sound)
{
    const auto found = m_sounds.find(sound);
    if (found == m_sounds.end()) {
        return;
    }
    const auto user = found->second.charge->user();
    if (found->second.started) {
        m_lastEnd = Clock::now();
        const Clock::time_point started = *found->second.started;
        m_played[user].all.add(m_lastEnd - started, m_lastEnd);
        if (m_othersWaitSince) {
            m_played[user].whileOthersWaited.add(m_lastEnd - std::max(started, *m_othersWaitSince),
                                                 m_lastEnd);
        }
    }
    m_sounds.erase(found);
    takePresent();
    m_returnTimer.start(0);
}

void UrgentTurns::takePresent()
{
    std::set<Quotas::UserId> users;
    m_playing.reset();
    for (const auto &[path, sound] : m_sounds) {
        users.insert(sound.charge->user());
        if (sound.started) {
            m_playing = sound.charge->user();
        }
    }
    m_users = users.size();
    if (m_users < 2) {
        m_othersWaitSince.reset();
    } else if (!m_othersWaitSince) {
        m_othersWaitSince = Clock::now();
    }
}

void UrgentTurns::giveWay(const CMPath &sound)
{
    const auto found = m_sounds.find(sound);
    const Sound &given = found->second;
    const Place place(given.hasPlayed || given.started, given.place);
    const Waiting waiting{given.charge, place, given.firstAdded, given.charge->user()};
    leavePlayer(sound);
    m_waiting.emplace(sound, waiting);
    m_places[waiting.user].emplace(waiting.place, sound);
    Q_EMIT gaveWay(sound);
}

void UrgentTurns::on_returnTimer_timeout()
{
    std::set<Quotas::UserId> present;
    for (const auto &[path, sound] : m_sounds) {
        if (!sound.started) {
            present.insert(sound.charge->user());
        }
    }
    for (const auto &[path, waiting] : m_waiting) {
        if (waiting.hasComeBack) {
            present.insert(waiting.user);
        }
    }
    std::vector<CMPath> returning;
    for (auto user = m_places.begin(); user != m_places.end();) {
        auto &places = user->second;
        if (present.count(user->first) == 0) {
            returning.push_back(places.begin()->second);
            places.erase(places.begin());
        }
        user = places.empty() ? m_places.erase(user) : std::next(user);
    }
    // The next one in turn first, so that no other has to give way to it.
    const Users played = playedNow();
    const auto time = [&](const CMPath &sound) { return timeOf(played, m_waiting.at(sound).user); };
    std::stable_sort(
        returning.begin(), returning.end(),
        [&time](const CMPath &one, const CMPath &other) { return time(one) < time(other); });
    for (const CMPath &sound : returning) {
        m_waiting.at(sound).hasComeBack = true;
    }
    for (const CMPath &sound : returning) {
        if (m_waiting.count(sound) > 0) {
            Q_EMIT cameBack(sound);
        }
    }
}

void UrgentTurns::takeUsers()
{
    m_places.clear();
    for (auto &[path, waiting] : m_waiting) {
        waiting.user = waiting.charge->user();
        if (!waiting.hasComeBack) {
            m_places[waiting.user].emplace(waiting.place, path);
        }
    }
    m_returnTimer.start(0);
    arrange();
}

void UrgentTurns::arrange()
{
    takePresent();
    const Users played = playedNow();
    const Sound *next = nextInTurn(played);
    if (next == nullptr || m_sounds.size() == 1) {
        return;
    }
    for (const CMPath &sound : thoseBefore(*next, played)) {
        giveWay(sound);
    }
    m_timer.start();
}

UrgentTurns::Users UrgentTurns::playedNow() const
{
    const Clock::time_point now = Clock::now();
    Users users;
    for (const auto &[user, played] : m_played) {
        users[user] = {played.whileOthersWaited.at(now), played.all.at(now)};
    }
    for (const auto &[path, sound] : m_sounds) {
        const auto user = sound.charge->user();
        if (sound.started) {
            Time &time = users[user];
            time.whileOthersWaited += now - *sound.started;
            time.all += now - *sound.started;
        }
    }
    return users;
}

UrgentTurns::Time UrgentTurns::timeOf(const Users &played, Quotas::UserId user)
{
    const auto found = played.find(user);
    return found == played.end() ? Time() : found->second;
}

const UrgentTurns::Sound *UrgentTurns::nextInTurn(const Users &played) const
{
    const Sound *next = nullptr;
    std::tuple<bool, Time, bool, std::uint64_t> least;
    for (const auto &[path, sound] : m_sounds) {
        if (sound.started) {
            continue;
        }
        const std::tuple turn(!hasWaitedLong(sound), timeOf(played, sound.charge->user()),
                              sound.hasPlayed, sound.number);
        if (next == nullptr || turn < least) {
            next = &sound;
            least = turn;
        }
    }
    return next;
}

bool UrgentTurns::hasWaitedLong(const Sound &sound) const
{
    if (sound.hasPlayed || (m_playing && *m_playing == sound.charge->user())) {
        return false;
    }
    const auto played = m_played.find(sound.charge->user());
    const Clock::time_point lastStart =
        played == m_played.end() ? Clock::time_point() : played->second.lastStart;
    const Seconds enough = std::max(longWait - double(m_users) * lessForEach, minLongWait);
    return Clock::now() - std::max(sound.firstAdded, lastStart) > enough;
}

UrgentTurns::Seconds UrgentTurns::margin() const
{
    return std::clamp<Seconds>(maxOfAll / double(m_users) - change, minMargin, maxMargin);
}

std::vector<CMPath> UrgentTurns::thoseBefore(const Sound &next, const Users &played) const
{
    const auto time = [&played](const Sound &sound) {
        return timeOf(played, sound.charge->user());
    };
    const Time least = time(next);
    const Seconds turn = margin();
    const Seconds most = least.whileOthersWaited + turn;
    const bool isLate = hasWaitedLong(next);
    const Clock::time_point now = Clock::now();
    const auto givesWay = [&](const Sound &sound) {
        if (sound.started) {
            return now - *sound.started > turn && (isLate || time(sound).whileOthersWaited > most);
        }
        // One that was sent later may have overtaken it, if another module has passed it on.
        return sound.number < next.number &&
               (isLate || least < time(sound) || (sound.hasPlayed && !next.hasPlayed));
    };
    std::vector<CMPath> sounds;
    for (const auto &[path, sound] : m_sounds) {
        if (givesWay(sound)) {
            sounds.push_back(path);
        }
    }
    // The next one would start when the one that plays has gone.
    std::partition(sounds.begin(), sounds.end(),
                   [this](const CMPath &path) { return !m_sounds.at(path).started; });
    return sounds;
}
