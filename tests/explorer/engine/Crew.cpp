// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Crew.h"

#include <algorithm>
#include <poll.h>

namespace exploration {
namespace {
/// States in one message: enough to keep the processes busy, few enough that all finish together.
constexpr StateTable::Number batch = 16;

std::string valuesOf(const DeadlyStep &deadly)
{
    std::string values;
    for (const Pick pick : deadly.picks) {
        values += char(pick.value);
    }
    return values;
}
} // namespace

Crew::Crew(const SystemFactory &factory, const Bounds &bounds, const StateTable *table)
    : m_factory(factory)
    , m_bounds(bounds)
    , m_table(table)
    , m_members(std::size_t(bounds.jobs))
{
    for (Member &member : m_members) {
        member.process = std::make_unique<WorkingProcess>(factory);
    }
}

void Crew::expand(Number first, Number last, const std::function<bool(Expansion)> &take)
{
    m_next = first;
    m_last = last;
    for (Number turn = first; turn != last;) {
        for (Member &member : m_members) {
            if (member.states.empty() && giveWork(&member)) {
                sendTasks(&member);
            }
        }
        lookAfter();
        for (auto done = m_done.find(turn); done != m_done.end(); done = m_done.find(++turn)) {
            Expansion expansion = std::move(done->second);
            m_done.erase(done);
            if (!take(std::move(expansion))) {
                return;
            }
        }
    }
}

bool Crew::giveWork(Member *member)
{
    const Number share = std::max<Number>(1, (m_last - m_next) / Number(m_members.size()));
    const Number end = m_next + std::min({batch, share, m_last - m_next});
    while (m_next != end) {
        member->states.push_back(m_next++);
    }
    std::reverse(member->states.begin(), member->states.end());
    return !member->states.empty();
}

void Crew::sendTasks(Member *member)
{
    std::vector<Task> tasks;
    for (auto state = member->states.rbegin(); state != member->states.rend(); ++state) {
        const auto deadly = m_deadly.find(*state);
        tasks.push_back({*state, m_table->sequence(*state), m_table->key(*state),
                         deadly != m_deadly.end() ? deadly->second : std::vector<DeadlyStep>()});
    }
    member->process->send(tasks);
}

void Crew::lookAfter()
{
    std::vector<pollfd> files;
    std::vector<Member *> busy;
    for (Member &member : m_members) {
        if (!member.states.empty()) {
            files.push_back({member.process->output(), POLLIN, 0});
            busy.push_back(&member);
        }
    }
    constexpr int glance = 500;
    ::poll(files.data(), files.size(), glance);
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (files[i].revents != 0) {
            receive(busy[i]);
        } else if (busy[i]->process->hangs(m_bounds.hang)) {
            bury(busy[i], true);
        }
    }
}

void Crew::receive(Member *member)
{
    std::optional<Expansion> expansion = member->process->receive();
    if (!expansion) {
        bury(member, false);
        return;
    }
    const Number state = expansion->state;
    const auto obituaries = m_obituaries.find(state);
    if (obituaries != m_obituaries.end()) {
        Expansion &late = obituaries->second;
        std::move(late.transitions.begin(), late.transitions.end(),
                  std::back_inserter(expansion->transitions));
        std::move(late.inspection.begin(), late.inspection.end(),
                  std::back_inserter(expansion->inspection));
        m_obituaries.erase(obituaries);
        m_deadly.erase(state);
    }
    m_done[state] = std::move(*expansion);
    member->states.pop_back();
}

void Crew::bury(Member *member, bool hung)
{
    // Each hang takes the whole timeout, so fewer hangs than deaths are enough.
    m_deaths += hung ? std::max(1, m_bounds.maxDeaths / 4) : 1;
    if (hung) {
        ++m_hangs;
        member->process->kill();
    }
    const std::string end = member->process->end();
    const Position &position = member->process->position();
    const Number state = member->states.back();
    const std::string words = position.message;
    const Observation observation{Observation::Kind::Finding,
                                  hung            ? "no step hangs"
                                  : words.empty() ? "no step ends the process: " + end
                                                  : "no assertion fails: " + words,
                                  hung ? std::string() : end};

    DeadlyStep deadly;
    deadly.inspecting = position.phase == Position::Phase::Inspecting;
    deadly.action = position.action;
    deadly.picks = {position.pick, position.pick + position.picks};
    Expansion &obituary = m_obituaries[state];
    if (position.phase == Position::Phase::Acting) {
        obituary.transitions.push_back({{deadly.action, valuesOf(deadly)}, {}, {observation}});
    } else {
        obituary.inspection.push_back(observation);
    }
    // With --first, one hang is enough: each further one would take the whole timeout again.
    const bool goesOn = !(hung && m_bounds.first);
    if (goesOn && (position.phase == Position::Phase::Acting || deadly.inspecting)) {
        m_deadly[state].push_back(deadly);
    } else {
        // The state is done: the search ends, or the process died on the way to a known state.
        obituary.state = state;
        m_done[state] = std::move(obituary);
        m_obituaries.erase(state);
        member->states.pop_back();
    }
    member->process = std::make_unique<WorkingProcess>(m_factory);
    if (!member->states.empty()) {
        sendTasks(member);
    }
}

} // namespace exploration
