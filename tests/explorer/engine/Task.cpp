// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Task.h"

#include <algorithm>

namespace exploration {
namespace {
void write(Bytes *bytes, const Step &step)
{
    bytes->add(step.action);
    bytes->add(step.picks);
}

Step readStep(BytesReader *reader)
{
    Step step;
    step.action = reader->get<Action>();
    step.picks = reader->text();
    return step;
}

void write(Bytes *bytes, const Observation &observation)
{
    bytes->add(observation.kind);
    bytes->add(observation.rule);
    bytes->add(observation.detail);
}

Observation readObservation(BytesReader *reader)
{
    Observation observation;
    observation.kind = reader->get<Observation::Kind>();
    observation.rule = reader->text();
    observation.detail = reader->text();
    return observation;
}

void write(Bytes *bytes, const DeadlyStep &deadly)
{
    bytes->add(deadly.inspecting);
    bytes->add(deadly.action);
    bytes->addAll(deadly.picks, [&](Pick pick) {
        bytes->add(pick.value);
        bytes->add(pick.alternatives);
    });
}

DeadlyStep readDeadlyStep(BytesReader *reader)
{
    DeadlyStep deadly;
    deadly.inspecting = reader->get<bool>();
    deadly.action = reader->get<Action>();
    reader->getAll(&deadly.picks, [&] {
        const auto value = reader->get<std::uint8_t>();
        return Pick{value, reader->get<std::uint8_t>()};
    });
    return deadly;
}

void write(Bytes *bytes, const Transition &transition)
{
    write(bytes, transition.step);
    bytes->add(transition.key);
    bytes->addAll(transition.observations, [&](const Observation &o) { write(bytes, o); });
}

Transition readTransition(BytesReader *reader)
{
    Transition transition;
    transition.step = readStep(reader);
    transition.key = reader->text();
    reader->getAll(&transition.observations, [&] { return readObservation(reader); });
    return transition;
}
} // namespace

bool Transition::hasFinding() const
{
    return std::any_of(observations.begin(), observations.end(),
                       [](const Observation &o) { return o.kind == Observation::Kind::Finding; });
}

void write(Bytes *bytes, const Task &task)
{
    bytes->add(task.state);
    bytes->addAll(task.sequence, [&](const Step &step) { write(bytes, step); });
    bytes->add(task.key);
    bytes->addAll(task.deadly, [&](const DeadlyStep &step) { write(bytes, step); });
}

Task readTask(BytesReader *reader)
{
    Task task;
    task.state = reader->get<std::uint32_t>();
    reader->getAll(&task.sequence, [&] { return readStep(reader); });
    task.key = reader->text();
    reader->getAll(&task.deadly, [&] { return readDeadlyStep(reader); });
    return task;
}

void write(Bytes *bytes, const Expansion &expansion)
{
    bytes->add(expansion.state);
    bytes->add(expansion.key);
    bytes->addAll(expansion.transitions, [&](const Transition &t) { write(bytes, t); });
    bytes->add(expansion.tried);
    bytes->addAll(expansion.inspection, [&](const Observation &o) { write(bytes, o); });
}

Expansion readExpansion(BytesReader *reader)
{
    Expansion expansion;
    expansion.state = reader->get<std::uint32_t>();
    expansion.key = reader->text();
    reader->getAll(&expansion.transitions, [&] { return readTransition(reader); });
    expansion.tried = reader->get<unsigned>();
    reader->getAll(&expansion.inspection, [&] { return readObservation(reader); });
    return expansion;
}

} // namespace exploration
