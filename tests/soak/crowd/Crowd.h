// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Hostile.h"
#include "Setting.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

/// Hostile clients, each in a thread of its own, which run attacks at random until they are stopped.
class Crowd
{
public:
    /// Members run these attacks only.
    Crowd(const Setting &setting, int size, std::uint64_t seed,
          std::vector<const Attack *> attacks);
    ~Crowd();
    Crowd(const Crowd &) = delete;
    Crowd &operator=(const Crowd &) = delete;

    /// To be called from time to time: ends connections that hang.
    void watch();

    /// Makes all leave. They have left when hasLeft() is true.
    void leave();
    bool hasLeft() const { return m_present == 0; }

    std::vector<Run> runs() const;
    std::vector<std::string> findings() const;

private:
    const std::vector<const Attack *> m_attacks;
    std::atomic<int> m_present{0};
    std::vector<std::unique_ptr<Hostile>> m_members;
    std::vector<std::thread> m_threads;
};
