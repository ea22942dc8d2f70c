// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Recorder.h"
#include "explorer/engine/System.h"
#include "explorer/engine/Task.h"

#include <chrono>
#include <memory>
#include <optional>
#include <sys/types.h>

namespace exploration {

/// A child process that expands states. If it dies, the explorer goes on. Only a process with one thread
/// can make it.
class WorkingProcess
{
public:
    explicit WorkingProcess(const SystemFactory &factory);
    ~WorkingProcess();

    WorkingProcess(const WorkingProcess &) = delete;
    WorkingProcess &operator=(const WorkingProcess &) = delete;

    void send(const std::vector<Task> &tasks);

    int output() const { return m_output; }

    /// Reads one expansion. Returns nothing if the process has died.
    std::optional<Expansion> receive();

    /// Whether the process has made no progress for longer than the limit.
    bool hangs(std::chrono::milliseconds limit);

    void kill();

    /// Waits for the process and returns how it ended.
    std::string end();

    const Position &position() const { return *m_position; }

private:
    [[noreturn]] static void work(const SystemFactory &factory, Position *position, int input,
                                  int output);

    Position *m_position; ///< shared with the child
    pid_t m_pid = 0;
    int m_input = -1;
    int m_output = -1;
    std::uint64_t m_lastSteps = 0;
    std::chrono::steady_clock::time_point m_lastMove = std::chrono::steady_clock::now();
};

/// The result of a narrated run.
struct Narration
{
    std::vector<std::string> lines;
    std::vector<Observation> observations;
    std::string end; ///< how the process died; empty if it did not
};

/// Narrates a sequence, in a process of its own, because the sequence may kill it.
Narration narrate(const SystemFactory &factory, const Sequence &sequence, bool inspecting,
                  std::chrono::milliseconds limit);

} // namespace exploration
