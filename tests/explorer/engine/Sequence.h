// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace exploration {

/// Something that can happen to a system. The system defines the numbers.
using Action = std::uint16_t;

/// One step: the action, and the choices made in it.
struct Step
{
    Action action = 0;
    std::string picks; ///< one byte for each choice

    bool operator==(const Step &other) const
    {
        return action == other.action && picks == other.picks;
    }
};

/// The steps from the start to a state.
using Sequence = std::vector<Step>;

/// The text of a sequence, as printed and as taken by --replay: "3 12.0.1 7".
std::string toString(const Sequence &sequence);

/// Throws std::invalid_argument if the text is not a sequence.
Sequence sequenceFrom(const std::string &text);

/// One choice: the alternative taken, and how many there were.
struct Pick
{
    std::uint8_t value = 0;
    std::uint8_t alternatives = 1;
};

/// Sets @p next to the picks that follow the made ones in the order of enumeration: the last choice
/// that has alternatives left takes its next one, and the choices after it are left out, so that
/// they start again. Returns false if no choice has alternatives left.
bool nextPicks(const std::vector<Pick> &made, std::string *next);

/// What was observed in a step.
struct Observation
{
    enum class Kind : std::uint8_t {
        Finding, ///< a rule was broken
        Note     ///< something allowed, named and counted
    };

    Kind kind = Kind::Finding;
    std::string rule;   ///< one sentence for all observations of a kind
    std::string detail; ///< the details of this observation
};

} // namespace exploration
