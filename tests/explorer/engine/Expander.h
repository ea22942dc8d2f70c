// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Recorder.h"
#include "explorer/engine/System.h"
#include "explorer/engine/Task.h"

namespace exploration {

/// Takes every step out of a state. For each step the system is started again and led to the state.
class Expander
{
public:
    Expander(System *system, Recorder *recorder);

    Expansion expand(const Task &task);

    /// Narrates a sequence and, on request, the inspection after it. Returns what was observed at
    /// the end.
    std::vector<Observation> narrate(const Sequence &sequence, bool inspecting);

private:
    void replay(const Sequence &sequence);
    void take(const Step &step);
    std::vector<Action> inspect(const Task &task, Expansion *expansion);
    void takeAction(const Task &task, Action action, Expansion *expansion);
    std::vector<Pick> takeStep(const Task &task, const Step &step, Expansion *expansion);

    System *m_system;
    Recorder *m_recorder;
};

} // namespace exploration
