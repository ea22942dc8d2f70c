// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Situation.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

/// Threads that act at random, or rest. Their number stays the same, so that the host's number of
/// threads does not depend on the load.
class LoadThreads
{
public:
    LoadThreads(Situation &situation, int count, std::uint64_t seed);
    ~LoadThreads();
    LoadThreads(const LoadThreads &) = delete;
    LoadThreads &operator=(const LoadThreads &) = delete;

    void start();

    /// Returns when every thread rests.
    void rest();

private:
    void run(std::uint64_t seed);
    bool awaitLoad();

    Situation &m_situation;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_loading = false;
    bool m_ended = false;
    int m_active = 0;
    std::vector<std::thread> m_threads;
};
