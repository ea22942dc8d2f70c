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

constexpr std::chrono::milliseconds interval(20);
} // namespace

UrgentTurns::UrgentTurns()
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(interval);
    tavoConnect(&m_timer, &QTimer::timeout, this, &UrgentTurns::on_timer_timeout);
}

void UrgentTurns::add(const CMPath &sound, const Quotas::Charge &charge, std::uint64_t number,
                      bool hasStarted)
{
    m_sounds.emplace(sound, Sound{&charge, number, Clock::now(), {}});
    if (hasStarted) {
        start(sound);
    }
    arrange();
}

void UrgentTurns::start(const CMPath &sound)
{
    const auto found = m_sounds.find(sound);
    if (found != m_sounds.end() && !found->second.started) {
        // The player opens it first, which may take long.
        found->second.started = std::max(found->second.added, m_lastEnd);
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
    const auto found = m_sounds.find(sound);
    if (found == m_sounds.end()) {
        return;
    }
    const auto user = found->second.charge->user();
    if (found->second.started) {
        m_lastEnd = Clock::now();
        m_played[user].add(m_lastEnd - *found->second.started, m_lastEnd);
    }
    m_sounds.erase(found);
}

void UrgentTurns::arrange()
{
    const Users played = playedNow();
    const Sound *next = nextInTurn(played);
    if (next == nullptr || m_sounds.size() == 1) {
        return;
    }
    for (const CMPath &sound : thoseBefore(*next, played)) {
        remove(sound);
        Q_EMIT gaveWay(sound);
    }
    m_timer.start();
}

UrgentTurns::Users UrgentTurns::playedNow() const
{
    const Clock::time_point now = Clock::now();
    Users users;
    for (const auto &[user, played] : m_played) {
        users[user] = played.at(now);
    }
    for (const auto &[path, sound] : m_sounds) {
        const auto user = sound.charge->user();
        if (sound.started) {
            users[user] += now - *sound.started;
        }
    }
    return users;
}

const UrgentTurns::Sound *UrgentTurns::nextInTurn(const Users &played) const
{
    const Sound *next = nullptr;
    std::pair<Seconds, std::uint64_t> least;
    for (const auto &[path, sound] : m_sounds) {
        if (sound.started) {
            continue;
        }
        const auto time = played.find(sound.charge->user());
        const std::pair turn(time == played.end() ? Seconds(0) : time->second, sound.number);
        if (next == nullptr || turn < least) {
            next = &sound;
            least = turn;
        }
    }
    return next;
}

UrgentTurns::Seconds UrgentTurns::margin() const
{
    std::set<Quotas::UserId> users;
    for (const auto &[path, sound] : m_sounds) {
        users.insert(sound.charge->user());
    }
    return std::clamp<Seconds>(maxOfAll / double(users.size()) - change, Seconds(0), maxMargin);
}

std::vector<CMPath> UrgentTurns::thoseBefore(const Sound &next, const Users &played) const
{
    const auto time = [&](const Sound &sound) {
        const auto found = played.find(sound.charge->user());
        return found == played.end() ? Seconds(0) : found->second;
    };
    const Seconds least = time(next);
    const Seconds most = least + margin();
    std::vector<CMPath> sounds;
    for (const auto &[path, sound] : m_sounds) {
        // One that was sent later may have overtaken it, if another module has passed it on.
        if (sound.started ? time(sound) > most
                          : sound.number < next.number && time(sound) > least) {
            sounds.push_back(path);
        }
    }
    // The next one would start when the one that plays has gone.
    std::partition(sounds.begin(), sounds.end(),
                   [this](const CMPath &path) { return !m_sounds.at(path).started; });
    return sounds;
}
