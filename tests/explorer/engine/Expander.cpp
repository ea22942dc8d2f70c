// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Expander.h"

#include <algorithm>

namespace exploration {
namespace {
using Phase = Position::Phase;

std::string valuesOf(const std::vector<Pick> &picks)
{
    std::string values;
    for (const Pick pick : picks) {
        values += char(pick.value);
    }
    return values;
}

/// Returns whether this is the deadly step, if all further choices take their first alternative.
bool leadsTo(const Step &step, const DeadlyStep &deadly)
{
    const std::string values = valuesOf(deadly.picks);
    return !deadly.inspecting && step.action == deadly.action &&
           step.picks.size() <= values.size() &&
           values.compare(0, step.picks.size(), step.picks) == 0 &&
           std::all_of(values.begin() + std::ptrdiff_t(step.picks.size()), values.end(),
                       [](char value) { return value == 0; });
}
} // namespace

Expander::Expander(System *system, Recorder *recorder)
    : m_system(system)
    , m_recorder(recorder)
{
    m_system->setRecorder(recorder);
}

Expansion Expander::expand(const Task &task)
{
    Expansion expansion;
    expansion.state = task.state;
    m_recorder->position().task = task.state;
    for (const Action action : inspect(task, &expansion)) {
        takeAction(task, action, &expansion);
    }
    m_recorder->position().phase = Phase::Idle;
    return expansion;
}

void Expander::take(const Step &step)
{
    m_recorder->position().action = step.action;
    m_recorder->begin(step.picks);
    m_system->act(step.action);
}

void Expander::replay(const Sequence &sequence)
{
    m_recorder->position().phase = Phase::Replaying;
    m_recorder->begin({});
    m_system->start();
    for (const Step &step : sequence) {
        take(step);
    }
    // They were reported when the sequence was new.
    m_recorder->takeObservations();
}

std::vector<Action> Expander::inspect(const Task &task, Expansion *expansion)
{
    replay(task.sequence);
    expansion->key = m_system->state();
    if (expansion->key != task.key) {
        if (!task.key.empty()) {
            expansion->inspection.push_back(
                {Observation::Kind::Finding, "the same sequence leads to the same state", {}});
        }
        m_system->finish();
        return {};
    }
    std::vector<Action> actions = m_system->actions();
    const bool deadly = std::any_of(task.deadly.begin(), task.deadly.end(),
                                    [](const DeadlyStep &step) { return step.inspecting; });
    if (!deadly) {
        m_recorder->position().phase = Phase::Inspecting;
        m_recorder->begin({});
        m_system->inspect();
    }
    m_system->finish();
    expansion->inspection = m_recorder->takeObservations();
    expansion->tried = m_recorder->takeTried();
    return actions;
}

void Expander::takeAction(const Task &task, Action action, Expansion *expansion)
{
    Step step{action, {}};
    do {
        const auto deadly =
            std::find_if(task.deadly.begin(), task.deadly.end(),
                         [&](const DeadlyStep &candidate) { return leadsTo(step, candidate); });
        const std::vector<Pick> picks =
            deadly != task.deadly.end() ? deadly->picks : takeStep(task, step, expansion);
        if (!nextPicks(picks, &step.picks)) {
            return;
        }
    } while (true);
}

std::vector<Pick> Expander::takeStep(const Task &task, const Step &step, Expansion *expansion)
{
    replay(task.sequence);
    m_recorder->position().phase = Phase::Acting;
    take(step);
    std::vector<Pick> picks = m_recorder->picks();
    Transition transition;
    transition.step = {step.action, valuesOf(picks)};
    transition.key = m_system->state();
    m_system->finish();
    transition.observations = m_recorder->takeObservations();
    expansion->transitions.push_back(std::move(transition));
    return picks;
}

std::vector<Observation> Expander::narrate(const Sequence &sequence, bool inspecting)
{
    m_recorder->begin({});
    m_system->start();
    for (const Step &step : sequence) {
        take(step);
    }
    if (inspecting && !m_recorder->hasFinding()) {
        m_recorder->begin({});
        m_system->inspect();
    }
    m_system->finish();
    return m_recorder->takeObservations();
}

} // namespace exploration
