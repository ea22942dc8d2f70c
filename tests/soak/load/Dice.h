// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <random>

/// Random decisions, the same for the same seed. Each thread has its own.
class Dice
{
public:
    explicit Dice(std::uint64_t seed)
        : m_engine(seed)
    {
    }

    /// A number from min to max, inclusive.
    int number(int min, int max) { return std::uniform_int_distribution<int>(min, max)(m_engine); }

    /// True in `share` percent of the cases.
    bool percent(int share) { return number(0, 99) < share; }

    template <typename List>
    const auto &oneOf(const List &list)
    {
        return list[decltype(list.size())(number(0, int(list.size()) - 1))];
    }

private:
    std::mt19937_64 m_engine;
};
