// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Crowd.h"

#include "Attacks.h"

#include <sys/resource.h>
#include <unistd.h>

namespace {
/// Makes this thread the last to get the processor. Who takes the processor from others slows down any
/// service; it is for the system to divide it.
void yieldTheProcessor()
{
    constexpr int least = 19;
    ::setpriority(PRIO_PROCESS, id_t(::gettid()), least);
}
} // namespace

Crowd::Crowd(const Setting &setting, int size, std::uint64_t seed,
             std::vector<const Attack *> attacks)
    : m_attacks(std::move(attacks))
    , m_present(size)
{
    for (int i = 0; i < size; ++i) {
        m_members.push_back(std::make_unique<Hostile>(setting, i, seed + std::uint64_t(i)));
        m_threads.emplace_back([this, &member = *m_members.back()] {
            yieldTheProcessor();
            while (!member.isStopped()) {
                member.attack(*member.dice().oneOf(m_attacks));
            }
            --m_present;
        });
    }
}

Crowd::~Crowd()
{
    leave();
    while (!hasLeft()) {
        watch();
        std::this_thread::yield();
    }
    for (std::thread &thread : m_threads) {
        thread.join();
    }
}

void Crowd::watch()
{
    for (const auto &member : m_members) {
        member->cutOverdue();
    }
}

void Crowd::leave()
{
    for (const auto &member : m_members) {
        member->stop();
    }
    watch();
}

std::vector<Run> Crowd::runs() const
{
    std::vector<Run> all;
    for (const auto &member : m_members) {
        const std::vector<Run> runs = member->runs();
        all.insert(all.end(), runs.begin(), runs.end());
    }
    return all;
}

std::vector<std::string> Crowd::findings() const
{
    std::vector<std::string> all;
    for (const auto &member : m_members) {
        const std::vector<std::string> findings = member->findings();
        all.insert(all.end(), findings.begin(), findings.end());
    }
    return all;
}
