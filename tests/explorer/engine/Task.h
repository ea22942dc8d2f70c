// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Bytes.h"
#include "explorer/engine/Sequence.h"

namespace exploration {

/// A step that took its process along, and must not be tried again.
struct DeadlyStep
{
    bool inspecting = false; ///< it was no step but the state's inspection
    Action action = 0;
    std::vector<Pick> picks;
};

/// A state to go on from.
struct Task
{
    std::uint32_t state = 0; ///< its number
    Sequence sequence;       ///< how to get there
    std::string key;         ///< to be found there; empty: to be told, and nothing else
    std::vector<DeadlyStep> deadly;
};

/// One step out of a state and what came of it.
struct Transition
{
    Step step;
    std::string key;
    std::vector<Observation> observations;

    bool hasFinding() const;
};

/// All that a state has to give.
struct Expansion
{
    std::uint32_t state = 0;
    std::string key; ///< as it was found
    std::vector<Transition> transitions;
    unsigned tried = 0; ///< how much its inspection tried
    std::vector<Observation> inspection;
};

void write(Bytes *bytes, const Task &task);
void write(Bytes *bytes, const Expansion &expansion);
Task readTask(BytesReader *reader);
Expansion readExpansion(BytesReader *reader);

} // namespace exploration
