// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "UrgentTurns.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {
/// For so long, a sound plays before it gives way, so that short ones play to their end.
constexpr std::chrono::duration<double> maxTurn(0.2);

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
    if (found->second.started) {
        m_lastEnd = Clock::now();
        m_lastTurns[found->second.charge->user()] = m_lastEnd;
    }
    m_sounds.erase(found);
}

void UrgentTurns::arrange()
{
    const LastTurns last = lastTurns();
    const Sound *next = nextInTurn(last);
    if (next == nullptr || m_sounds.size() == 1) {
        return;
    }
    for (const CMPath &sound : thoseBefore(*next, last)) {
        remove(sound);
        Q_EMIT gaveWay(sound);
    }
    m_timer.start();
}

UrgentTurns::LastTurns UrgentTurns::lastTurns() const
{
    LastTurns last = m_lastTurns;
    for (const auto &[path, sound] : m_sounds) {
        if (sound.started) {
            last[sound.charge->user()] = Clock::time_point::max();
        }
    }
    return last;
}

UrgentTurns::Clock::time_point UrgentTurns::lastTurnOf(const Sound &sound, const LastTurns &last)
{
    const auto turn = last.find(sound.charge->user());
    return turn == last.end() ? Clock::time_point::min() : turn->second;
}

const UrgentTurns::Sound *UrgentTurns::nextInTurn(const LastTurns &last) const
{
    const Sound *next = nullptr;
    std::pair<Clock::time_point, std::uint64_t> first;
    for (const auto &[path, sound] : m_sounds) {
        if (sound.started) {
            continue;
        }
        const std::pair turn(lastTurnOf(sound, last), sound.number);
        if (next == nullptr || turn < first) {
            next = &sound;
            first = turn;
        }
    }
    return next;
}

UrgentTurns::Seconds UrgentTurns::turn() const
{
    std::set<Quotas::UserId> users;
    for (const auto &[path, sound] : m_sounds) {
        users.insert(sound.charge->user());
    }
    return std::clamp<Seconds>(maxOfAll / double(users.size()) - change, Seconds(0), maxTurn);
}

std::vector<CMPath> UrgentTurns::thoseBefore(const Sound &next, const LastTurns &last) const
{
    const Clock::time_point nextsLast = lastTurnOf(next, last);
    const Seconds longest = turn();
    const Clock::time_point now = Clock::now();
    std::vector<CMPath> sounds;
    for (const auto &[path, sound] : m_sounds) {
        if (lastTurnOf(sound, last) <= nextsLast) {
            continue;
        }
        // One that was sent later may have overtaken it, if another module has passed it on.
        if (sound.started ? now - *sound.started > longest : sound.number < next.number) {
            sounds.push_back(path);
        }
    }
    // The next one would start when the one that plays has gone.
    std::partition(sounds.begin(), sounds.end(),
                   [this](const CMPath &path) { return !m_sounds.at(path).started; });
    return sounds;
}
