// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Bytes.h"
#include "explorer/engine/Sequence.h"

namespace exploration {

/// A step in which the process died. It is not tried again.
struct DeadlyStep
{
    bool inspecting = false; ///< the process died in the state's inspection, not in a step
    Action action = 0;
    std::vector<Pick> picks;
};

/// A state to expand.
struct Task
{
    std::uint32_t state = 0; ///< its number
    Sequence sequence;       ///< how to get there
    std::string key;         ///< expected there; empty if the sequence is only to be narrated
    std::vector<DeadlyStep> deadly;
};

/// One step out of a state and its result.
struct Transition
{
    Step step;
    std::string key;
    std::vector<Observation> observations;

    bool hasFinding() const;
};

/// A state's steps and inspection.
struct Expansion
{
    std::uint32_t state = 0;
    std::string key; ///< as it was found
    std::vector<Transition> transitions;
    unsigned tried = 0; ///< the number of things that its inspection tried
    std::vector<Observation> inspection;
};

void write(Bytes *bytes, const Task &task);
void write(Bytes *bytes, const Expansion &expansion);
Task readTask(BytesReader *reader);
Expansion readExpansion(BytesReader *reader);

} // namespace exploration
