// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Sequence.h"

#include <atomic>
#include <functional>

namespace exploration {

/// What a working process is at, in memory that it shares with the explorer: all that is left of a
/// process that dies.
struct Position
{
    enum class Phase : std::uint8_t { Idle, Replaying, Inspecting, Acting };
    static constexpr int mostPicks = 64;
    static constexpr int longestMessage = 1000;

    std::atomic<std::uint64_t> steps{0}; ///< goes on as long as the process does
    std::atomic<std::uint32_t> task{0};
    std::atomic<Phase> phase{Phase::Idle};
    std::atomic<Action> action{0};
    std::atomic<int> picks{0};
    Pick pick[mostPicks];
    char message[longestMessage + 1] = {}; ///< the last words

    void setMessage(const char *text);
};

/// Where a system's choices come from and what it reports goes to.
class Recorder
{
public:
    explicit Recorder(Position *position)
        : m_position(position)
    {
    }

    /// The next step takes these picks; further choices take their first alternative.
    void begin(const std::string &prescribed);

    int choose(int alternatives);
    std::vector<Pick> picks() const;

    void observe(Observation observation);
    std::vector<Observation> takeObservations();
    bool hasFinding() const { return m_hasFinding; }

    void countTried() { ++m_tried; }
    unsigned takeTried();

    /// Takes words, and whether they begin a line.
    using Narrator = std::function<void(const std::string &, bool)>;

    void setNarrator(Narrator narrator);
    bool isNarrating() const { return bool(m_narrator); }
    void say(const std::string &words, bool newLine);

    Position &position() { return *m_position; }

private:
    Position *m_position;
    std::string m_prescribed;
    std::vector<Observation> m_observations;
    bool m_hasFinding = false;
    unsigned m_tried = 0;
    Narrator m_narrator;
};

} // namespace exploration
