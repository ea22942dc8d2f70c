// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "LoadThreads.h"

#include "Actions.h"

#include <chrono>

LoadThreads::LoadThreads(Situation &situation, int count, std::uint64_t seed)
    : m_situation(situation)
{
    for (int i = 0; i < count; ++i) {
        m_threads.emplace_back([this, seed, i] { run(seed + std::uint64_t(i)); });
    }
}

LoadThreads::~LoadThreads()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ended = true;
    }
    m_changed.notify_all();
    for (std::thread &thread : m_threads) {
        thread.join();
    }
}

void LoadThreads::start()
{
    {
        const std::lock_guard lock(m_mutex);
        m_loading = true;
    }
    m_changed.notify_all();
}

void LoadThreads::rest()
{
    std::unique_lock lock(m_mutex);
    m_loading = false;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_active == 0; });
}

bool LoadThreads::awaitLoad()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_loading || m_ended; });
    if (m_ended) {
        return false;
    }
    ++m_active;
    return true;
}

void LoadThreads::run(std::uint64_t seed)
{
    Actions actions(m_situation, seed);
    while (awaitLoad()) {
        std::unique_lock lock(m_mutex);
        while (m_loading && !m_ended) {
            lock.unlock();
            if (!m_situation.lull) {
                actions.act();
            }
            const std::chrono::milliseconds pause(actions.pauseMs());
            lock.lock();
            m_changed.wait_for(lock, pause, [this] { return !m_loading || m_ended; });
        }
        --m_active;
        m_changed.notify_all();
    }
}
