// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Search.h"

#include "explorer/engine/Crew.h"
#include "explorer/engine/StateTable.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace exploration {
namespace {
using Clock = std::chrono::steady_clock;

class Search
{
public:
    Search(const SystemFactory &factory, const Bounds &bounds)
        : m_factory(factory)
        , m_bounds(bounds)
        , m_crew(factory, bounds, &m_table)
    {
    }

    Outcome run();

private:
    std::string firstKey();
    void exploreAll();
    void compareAll();
    bool take(const Expansion &expansion);
    bool compare(const Expansion &expansion);
    void takeTransition(StateTable::Number from, const Transition &transition);
    void see(StateTable::Number from, const Step *step, const Observation &observation);
    bool boundMet();
    void showProgress(bool always);

    SystemFactory m_factory;
    Bounds m_bounds;
    StateTable m_table;
    Crew m_crew;
    Outcome m_outcome;
    std::size_t m_sightings = 0;
    std::vector<std::size_t> m_futures; ///< of each state, only with --twice
    StateTable::Number m_taken = 0;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_lastProgress = m_start;
};

/// The state of a system that was just started, in a process of its own.
std::string Search::firstKey()
{
    WorkingProcess process(m_factory);
    process.send({Task()});
    const auto expansion = process.receive();
    if (!expansion) {
        throw std::runtime_error(std::string("the system does not start: ") +
                                 process.position().message);
    }
    return expansion->key;
}

/// A hash of the states that one step can lead to; their order does not matter.
std::size_t futureOf(const Expansion &expansion)
{
    std::vector<std::string> keys;
    keys.reserve(expansion.transitions.size());
    for (const Transition &transition : expansion.transitions) {
        keys.push_back(transition.key);
        for (const Observation &observation : transition.observations) {
            keys.back() += observation.rule;
        }
    }
    std::sort(keys.begin(), keys.end());
    std::size_t future = keys.size();
    for (const std::string &key : keys) {
        future = future * 1000003 + std::hash<std::string>()(key);
    }
    return future;
}

Outcome Search::run()
{
    exploreAll();
    m_outcome.closed = m_outcome.stoppedBy.empty();
    m_outcome.states = m_table.size();
    if (m_bounds.twice && m_outcome.closed && m_outcome.findings.empty()) {
        compareAll();
    }
    m_outcome.took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_start);
    showProgress(true);
    return std::move(m_outcome);
}

void Search::compareAll()
{
    m_table.takeOtherWays();
    m_crew.expand(0, m_table.size(),
                  [this](const Expansion &expansion) { return compare(expansion); });
    m_outcome.twice = m_outcome.stoppedBy.empty();
}

bool Search::compare(const Expansion &expansion)
{
    m_outcome.transitions += expansion.transitions.size();
    m_outcome.tried += expansion.tried;
    if (futureOf(expansion) != m_futures[expansion.state]) {
        see(expansion.state, nullptr,
            {Observation::Kind::Finding, "states that look the same have the same future", {}});
    }
    showProgress(false);
    return !boundMet();
}

void Search::exploreAll()
{
    m_table.add(firstKey(), 0, {});
    m_outcome.levels.push_back(1);
    StateTable::Number first = 0;
    while (first != m_table.size() && m_outcome.stoppedBy.empty()) {
        if (m_outcome.depth >= m_bounds.maxDepth) {
            m_outcome.stoppedBy = "--max-depth";
            break;
        }
        const StateTable::Number levelEnd = m_table.size();
        m_crew.expand(first, levelEnd,
                      [this](const Expansion &expansion) { return take(expansion); });
        if (!m_outcome.stoppedBy.empty()) {
            break;
        }
        first = levelEnd;
        ++m_outcome.depth;
        if (first != m_table.size()) {
            m_outcome.levels.push_back(m_table.size() - first);
        }
        if (m_bounds.first && !m_outcome.findings.empty()) {
            m_outcome.stoppedBy = "--first";
        }
    }
}

bool Search::take(const Expansion &expansion)
{
    ++m_taken;
    m_outcome.tried += expansion.tried;
    for (const Observation &observation : expansion.inspection) {
        see(expansion.state, nullptr, observation);
    }
    for (const Transition &transition : expansion.transitions) {
        takeTransition(expansion.state, transition);
    }
    if (m_bounds.twice) {
        m_futures.push_back(futureOf(expansion));
    }
    showProgress(false);
    return !boundMet();
}

void Search::takeTransition(StateTable::Number from, const Transition &transition)
{
    ++m_outcome.transitions;
    for (const Observation &observation : transition.observations) {
        see(from, &transition.step, observation);
    }
    if (!transition.hasFinding()) {
        m_table.add(transition.key, from, transition.step);
    }
}

void Search::see(StateTable::Number from, const Step *step, const Observation &observation)
{
    auto &sightings =
        observation.kind == Observation::Kind::Finding ? m_outcome.findings : m_outcome.notes;
    Sighting &sighting = sightings[observation.rule];
    if (sighting.count++ > 0) {
        return; // the first has the shortest sequence: states come in order of length
    }
    sighting.order = m_sightings++;
    sighting.observation = observation;
    sighting.sequence = m_table.sequence(from);
    sighting.inspecting = step == nullptr;
    if (step != nullptr) {
        sighting.sequence.push_back(*step);
    }
}

bool Search::boundMet()
{
    if (m_table.size() > m_bounds.maxStates) {
        m_outcome.stoppedBy = "--max-states";
    } else if (Clock::now() - m_start > m_bounds.maxTime) {
        m_outcome.stoppedBy = "--max-minutes";
    } else if (m_bounds.first && m_crew.hangs() > 0 && !m_outcome.findings.empty()) {
        m_outcome.stoppedBy = "--first";
    } else if (m_crew.deaths() >= m_bounds.maxDeaths) {
        m_outcome.stoppedBy = "too many deaths and hangs";
    }
    return !m_outcome.stoppedBy.empty();
}

void Search::showProgress(bool always)
{
    const auto now = Clock::now();
    if (!m_bounds.progress || (!always && now - m_lastProgress < std::chrono::seconds(2))) {
        return;
    }
    m_lastProgress = now;
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    std::fprintf(stderr,
                 "level %zu: %u states, %u to go, %llu transitions, %.0f/s, %zu findings, %.0f s\n",
                 m_outcome.depth, m_table.size(), m_table.size() - m_taken,
                 static_cast<unsigned long long>(m_outcome.transitions),
                 double(m_outcome.transitions) / seconds, m_outcome.findings.size(), seconds);
}
} // namespace

std::vector<Sighting> Outcome::sorted(const std::map<std::string, Sighting> &sightings)
{
    std::vector<Sighting> list;
    list.reserve(sightings.size());
    for (const auto &[rule, sighting] : sightings) {
        list.push_back(sighting);
    }
    std::sort(list.begin(), list.end(), [](const Sighting &one, const Sighting &other) {
        return std::make_pair(one.sequence.size(), one.order) <
               std::make_pair(other.sequence.size(), other.order);
    });
    return list;
}

Outcome explore(const SystemFactory &factory, const Bounds &bounds)
{
    return Search(factory, bounds).run();
}

} // namespace exploration
