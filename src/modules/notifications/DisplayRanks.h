// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <cstddef>
#include <vector>

/// The ranks of the queued display notifications, in the order of the queue. A search finds the
/// position of a rank.
///
/// The ranks are kept in runs of at most 512. An insertion or removal moves only the ranks behind it
/// in the same run; in one array it would move all ranks behind it. Neighbouring runs that fit into
/// half a run are joined, so the memory of a burst is given back after it.
class DisplayRanks
{
public:
    /// The order of the queue: the more urgent first; among equally urgent ones, the older first.
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

    /// The number of ranks before this one, which need not be in the queue.
    int position(const Rank &rank) const;

    /// The position must be at least 0 and less than size(), here and in takeAt().
    Rank at(int position) const;

    void insert(const Rank &rank);
    Rank takeAt(int position);

private:
    friend struct DisplayRanksAccess; // for tests

    using Run = std::vector<Rank>;

    struct Place
    {
        std::size_t run;
        std::size_t within;
    };
    Place placeOf(int position) const;

    /// The first run whose last rank is not before this one; the number of runs if there is none.
    std::size_t runOf(const Rank &rank) const;

    void split(std::size_t run);
    void joinWithNext(std::size_t run);

    std::vector<Run> m_runs; ///< no run is empty
    int m_size = 0;
};
