// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <random>

/// Random decisions that the same seed repeats. One thread each.
class Dice
{
public:
    explicit Dice(std::uint64_t seed)
        : m_engine(seed)
    {
    }

    /// From least to most, both included.
    int number(int least, int most)
    {
        return std::uniform_int_distribution<int>(least, most)(m_engine);
    }

    /// True in so many of a hundred cases.
    bool percent(int share) { return number(0, 99) < share; }

    template <typename List>
    const auto &oneOf(const List &list)
    {
        return list[decltype(list.size())(number(0, int(list.size()) - 1))];
    }

private:
    std::mt19937_64 m_engine;
};
