// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Search.h"

#include <deque>
#include <string>
#include <unordered_map>

namespace exploration {

/// The states that have been found, each with the shortest way to it and one of its other ways.
class StateTable
{
public:
    using Number = std::uint32_t;

    /// Adds the state, or another way to it if it is known.
    void add(const std::string &key, Number parent, const Step &step)
    {
        const auto [entry, isNew] = m_numbers.try_emplace(key, size());
        if (isNew) {
            m_states.push_back({&entry->first, {parent, step}, {}, false});
        } else {
            // The last one is likely to differ most.
            State &state = m_states[entry->second];
            state.other = {parent, step};
            state.hasOther = true;
        }
    }

    Number size() const { return Number(m_states.size()); }
    const std::string &key(Number state) const { return *m_states[state].key; }

    /// From now on the other ways are taken to the states that have one.
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
