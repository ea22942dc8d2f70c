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

/// The limits of a search and the number of its working processes.
struct Bounds
{
    int jobs = 1;
    std::size_t maxDepth = std::size_t(-1);
    std::size_t maxStates = std::size_t(-1);
    std::chrono::seconds maxTime = std::chrono::hours(24 * 365);
    std::chrono::milliseconds hang = std::chrono::seconds(10); ///< a step that takes longer hangs
    int maxDeaths = 20;    ///< the search ends after this number
    bool first = false;    ///< end with the level that has the first finding
    bool twice = false;    ///< reach every state by a second sequence too, and compare what follows
    bool progress = false; ///< on stderr
};

/// An observation, how often it was made, and the shortest sequence to it.
struct Sighting
{
    Observation observation; ///< with the details seen in the shortest sequence
    Sequence sequence;
    bool inspecting = false; ///< seen in the inspection after the sequence
    std::uint64_t count = 0;
    std::size_t order = 0; ///< of the first sighting among all sightings
};

/// The result of a search.
struct Outcome
{
    std::size_t states = 0;
    std::uint64_t transitions = 0;
    std::uint64_t tried = 0;         ///< the number of things tried by inspections
    std::size_t depth = 0;           ///< every sequence up to this length was tried
    std::vector<std::size_t> levels; ///< new states per length of the shortest sequence
    bool twice = false;              ///< every state was reached by two sequences and compared
    bool closed = false;             ///< nothing is left to explore
    std::string stoppedBy;           ///< the limit that was reached; empty if closed
    std::chrono::milliseconds took{0};
    std::map<std::string, Sighting> findings; ///< by rule
    std::map<std::string, Sighting> notes;

    /// The observations of one kind, ordered by the length of their sequences.
    static std::vector<Sighting> sorted(const std::map<std::string, Sighting> &sightings);
};

/// Tries all sequences of a system's steps, shorter ones first, and expands each state once. A
/// sequence ends with its first finding. The outcome does not depend on the number of jobs.
Outcome explore(const SystemFactory &factory, const Bounds &bounds);

} // namespace exploration
