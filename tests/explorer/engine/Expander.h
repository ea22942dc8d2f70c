// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Recorder.h"
#include "explorer/engine/System.h"
#include "explorer/engine/Task.h"

namespace exploration {

/// Takes every step out of a state, each in a system started afresh and brought there again.
class Expander
{
public:
    Expander(System *system, Recorder *recorder);

    Expansion expand(const Task &task);

    /// Goes through a sequence, and through the inspection behind it if wanted, in words. Returns
    /// what was observed at the end.
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
