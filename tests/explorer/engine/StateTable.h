// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Search.h"

#include <deque>
#include <string>
#include <unordered_map>

namespace exploration {

/// The states found so far, each with the shortest sequence that leads to it and one other.
class StateTable
{
public:
    using Number = std::uint32_t;

    /// Adds the state, or another sequence that leads to it if it is known.
    void add(const std::string &key, Number parent, const Step &step)
    {
        const auto [entry, isNew] = m_numbers.try_emplace(key, size());
        if (isNew) {
            m_states.push_back({&entry->first, {parent, step}, {}, false});
        } else {
            // The last one probably differs most from the first.
            State &state = m_states[entry->second];
            state.other = {parent, step};
            state.hasOther = true;
        }
    }

    Number size() const { return Number(m_states.size()); }
    const std::string &key(Number state) const { return *m_states[state].key; }

    /// From now on, states are reached by their other sequence, if they have one.
    void takeOtherWays() { m_otherWays = true; }

    Sequence sequence(Number state) const
    {
        Sequence sequence;
        if (m_otherWays && m_states[state].hasOther) {
            sequence.push_back(m_states[state].other.step);
            state = m_states[state].other.parent;
        }
        for (; state != 0; state = m_states[state].way.parent) {
            sequence.push_back(m_states[state].way.step);
        }
        return {sequence.rbegin(), sequence.rend()};
    }

private:
    struct Way
    {
        Number parent = 0;
        Step step;
    };

    struct State
    {
        const std::string *key; ///< in the map
        Way way;
        Way other;
        bool hasOther;
    };

    std::unordered_map<std::string, Number> m_numbers;
    std::deque<State> m_states;
    bool m_otherWays = false;
};

} // namespace exploration
