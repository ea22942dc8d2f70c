// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/StateTable.h"
#include "explorer/engine/WorkingProcess.h"

#include <functional>
#include <map>
#include <memory>

namespace exploration {

/// Lets working processes expand states and returns the expansions in the order of the states.
class Crew
{
public:
    using Number = StateTable::Number;

    Crew(const SystemFactory &factory, const Bounds &bounds, const StateTable *table);

    /// Expands the states from first up to, but not including, last. The function returns whether
    /// to go on.
    void expand(Number first, Number last, const std::function<bool(Expansion)> &take);

    int deaths() const { return m_deaths; }
    int hangs() const { return m_hangs; }

private:
    struct Member
    {
        std::unique_ptr<WorkingProcess> process;
        std::vector<Number> states; ///< waiting for this process, the last one first
    };

    bool giveWork(Member *member);
    void sendTasks(Member *member);
    void receive(Member *member);
    void bury(Member *member, bool hung);
    void lookAfter();

    SystemFactory m_factory;
    Bounds m_bounds;
    const StateTable *m_table;
    std::vector<Member> m_members;
    Number m_next = 0;
    Number m_last = 0;
    std::map<Number, Expansion> m_done; ///< expansions that are ready before their turn
    /// The deadly steps of the states that are being expanded.
    std::map<Number, std::vector<DeadlyStep>> m_deadly;
    std::map<Number, Expansion> m_obituaries;
    int m_deaths = 0;
    int m_hangs = 0;
};

} // namespace exploration
