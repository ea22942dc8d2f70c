// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <cstddef>
#include <vector>

/// The ranks of the queued display notifications, in the order of the queue: a search leads from a
/// rank to its position.
///
/// They stand in runs of bounded length: one that comes or goes moves the few behind it in its run,
/// where an array would move all. Two neighbouring runs are never so short that half a run would hold
/// both, so neither the runs nor their room outlast a burst.
class DisplayRanks
{
public:
    /// What the queue is ordered by: the more urgent first, then the older.
    struct Rank
    {
        int priority;
        quint64 arrival;

        bool operator<(const Rank &other) const
        {
            return priority != other.priority ? priority > other.priority : arrival < other.arrival;
        }
        bool operator==(const Rank &other) const { return arrival == other.arrival; }
    };

    int size() const { return m_size; }

    /// How many stand before the rank, whether or not it is there itself.
    int position(const Rank &rank) const;

    /// The position is from 0 to less than the size.
    Rank at(int position) const;

    void insert(const Rank &rank);

    /// The position is from 0 to less than the size.
    Rank takeAt(int position);

private:
    friend struct DisplayRanksAccess; // of the tests

    using Run = std::vector<Rank>;

    struct Place
    {
        std::size_t run;
        std::size_t within;
    };
    Place placeOf(int position) const;

    /// The first run that doesn't end before the rank; how many runs there are when all do.
    std::size_t runOf(const Rank &rank) const;

    void split(std::size_t run);
    void joinWithNext(std::size_t run);

    std::vector<Run> m_runs; ///< none of them empty
    int m_size = 0;
};
