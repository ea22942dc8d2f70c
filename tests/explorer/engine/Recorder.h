// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Sequence.h"

#include <atomic>
#include <functional>

namespace exploration {

/// What a working process is doing, in memory shared with the explorer. It remains when the process
/// dies.
struct Position
{
    enum class Phase : std::uint8_t { Idle, Replaying, Inspecting, Acting };
    static constexpr int maxPicks = 64;
    static constexpr int maxMessage = 1000;

    std::atomic<std::uint64_t> steps{0}; ///< grows while the process makes progress
    std::atomic<std::uint32_t> task{0};
    std::atomic<Phase> phase{Phase::Idle};
    std::atomic<Action> action{0};
    std::atomic<int> picks{0};
    Pick pick[maxPicks];
    char message[maxMessage + 1] = {}; ///< set by lastWords()

    void setMessage(const char *text);
};

/// Makes a system's choices and takes its reports.
class Recorder
{
public:
    explicit Recorder(Position *position)
        : m_position(position)
    {
    }

    /// The picks for the next step. Further choices take their first alternative.
    void begin(const std::string &prescribed);

    int choose(int alternatives);
    std::vector<Pick> picks() const;

    void observe(Observation observation);
    std::vector<Observation> takeObservations();
    bool hasFinding() const { return m_hasFinding; }

    void countTried() { ++m_tried; }
    unsigned takeTried();

    /// Called with words, and whether they begin a line.
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
