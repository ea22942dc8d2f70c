// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace exploration {

/// One of the things that can happen to a system; the numbers are the system's own.
using Action = std::uint16_t;

/// One step: what happened, and how the choices that arose on the way were made.
struct Step
{
    Action action = 0;
    std::string picks; ///< a byte a choice

    bool operator==(const Step &other) const
    {
        return action == other.action && picks == other.picks;
    }
};

/// What leads from a fresh system to a state.
using Sequence = std::vector<Step>;

/// The form in which a sequence is printed and given back with --replay: "3 12.0.1 7".
std::string toString(const Sequence &sequence);

/// Throws std::invalid_argument for a text that is no sequence.
Sequence sequenceFrom(const std::string &text);

/// One choice that was made, and among how many.
struct Pick
{
    std::uint8_t value = 0;
    std::uint8_t alternatives = 1;
};

/// The picks that come after these in the order of enumeration: the last choice that has
/// alternatives left takes the next one, and what follows is decided anew. False when there are none.
bool nextPicks(const std::vector<Pick> &made, std::string *next);

/// What was seen at a step.
struct Observation
{
    enum class Kind : std::uint8_t {
        Finding, ///< a rule was broken
        Note     ///< allowed, but to be named and counted
    };

    Kind kind = Kind::Finding;
    std::string rule;   ///< the same sentence for all of a kind
    std::string detail; ///< this one's circumstances
};

} // namespace exploration
