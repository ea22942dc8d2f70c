// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayRanks.h"

#include <algorithm>
#include <utility>

namespace {
constexpr std::size_t maxRunLength = 512;
} // namespace

int DisplayRanks::position(const Rank &rank) const
{
    const std::size_t number = runOf(rank);
    std::size_t position = 0;
    for (std::size_t before = 0; before < number; ++before) {
        position += m_runs[before].size();
    }
    if (number < m_runs.size()) {
        const Run &run = m_runs[number];
        position += std::size_t(std::lower_bound(run.begin(), run.end(), rank) - run.begin());
    }
    return int(position);
}

DisplayRanks::Rank DisplayRanks::at(int position) const
{
    const Place place = placeOf(position);
    return m_runs[place.run][place.within];
}

void DisplayRanks::insert(const Rank &rank)
{
    ++m_size;
    if (m_runs.empty()) {
        m_runs.push_back({rank});
        return;
    }
    // A rank behind all others goes into the last run.
    const std::size_t number = std::min(runOf(rank), m_runs.size() - 1);
    Run &run = m_runs[number];
    run.insert(std::lower_bound(run.begin(), run.end(), rank), rank);
    if (run.size() > maxRunLength) {
        split(number);
    }
}

DisplayRanks::Rank DisplayRanks::takeAt(int position)
{
    const Place place = placeOf(position);
    --m_size;
    Run &run = m_runs[place.run];
    const Rank rank = run[place.within];
    run.erase(run.begin() + std::ptrdiff_t(place.within));
    if (run.empty()) {
        m_runs.erase(m_runs.begin() + std::ptrdiff_t(place.run));
        return rank;
    }
    joinWithNext(place.run);
    if (place.run > 0) {
        joinWithNext(place.run - 1);
    }
    return rank;
}

DisplayRanks::Place DisplayRanks::placeOf(int position) const
{
    Q_ASSERT(position >= 0 && position < m_size);
    Place place{0, std::size_t(position)};
    while (place.within >= m_runs[place.run].size()) {
        place.within -= m_runs[place.run].size();
        ++place.run;
    }
    return place;
}

std::size_t DisplayRanks::runOf(const Rank &rank) const
{
    const auto run =
        std::lower_bound(m_runs.begin(), m_runs.end(), rank,
                         [](const Run &each, const Rank &sought) { return each.back() < sought; });
    return std::size_t(run - m_runs.begin());
}

void DisplayRanks::split(std::size_t run)
{
    const auto middle = m_runs[run].begin() + maxRunLength / 2;
    Run later(middle, m_runs[run].end());
    m_runs[run].erase(middle, m_runs[run].end());
    m_runs[run].shrink_to_fit();
    m_runs.insert(m_runs.begin() + std::ptrdiff_t(run) + 1, std::move(later));
}

void DisplayRanks::joinWithNext(std::size_t run)
{
    if (run + 1 == m_runs.size()) {
        return;
    }
    const Run &next = m_runs[run + 1];
    if (m_runs[run].size() + next.size() <= maxRunLength / 2) {
        m_runs[run].insert(m_runs[run].end(), next.begin(), next.end());
        m_runs.erase(m_runs.begin() + std::ptrdiff_t(run) + 1);
    }
}
