// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/System.h"
#include "explorer/engine/Task.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>

namespace exploration {

/// How far to go, and with how many hands.
struct Bounds
{
    int jobs = 1;
    std::size_t maxDepth = std::size_t(-1);
    std::size_t maxStates = std::size_t(-1);
    std::chrono::seconds maxTime = std::chrono::hours(24 * 365);
    std::chrono::milliseconds hang = std::chrono::seconds(10); ///< a step that takes longer hangs
    int maxDeaths = 20;    ///< a system that dies again and again is known well enough then
    bool first = false;    ///< end with the level that has the first finding
    bool twice = false;    ///< go to every state by another way as well, and compare what follows
    bool progress = false; ///< on stderr
};

/// Something that was seen, how often, and how it is reached soonest.
struct Sighting
{
    Observation observation; ///< with the detail of the shortest sequence
    Sequence sequence;
    bool inspecting = false; ///< behind the sequence, the state's inspection
    std::uint64_t count = 0;
    std::size_t order = 0; ///< among all that was seen
};

/// What an exploration has come to.
struct Outcome
{
    std::size_t states = 0;
    std::uint64_t transitions = 0;
    std::uint64_t tried = 0;         ///< by inspections, of what changes nothing
    std::size_t depth = 0;           ///< every sequence up to this length has been gone through
    std::vector<std::size_t> levels; ///< new states per length of the shortest sequence
    bool twice = false;              ///< every state's steps were compared behind two ways to it
    bool closed = false;             ///< nothing is left to explore
    std::string stoppedBy;           ///< the bound that was met; empty when closed
    std::chrono::milliseconds took{0};
    std::map<std::string, Sighting> findings; ///< by rule
    std::map<std::string, Sighting> notes;

    /// Those of a kind by the length of their sequences, and as they came.
    static std::vector<Sighting> sorted(const std::map<std::string, Sighting> &sightings);
};

/// Goes through all sequences of a system's steps, shorter ones first, each state once. A sequence
/// ends with its first finding. The outcome is the same for any number of jobs.
Outcome explore(const SystemFactory &factory, const Bounds &bounds);

} // namespace exploration
