// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "host/ExitCode.h"
#include "host/HostConfiguration.h"
#include "host/ModuleThread.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// A module to run, and its file.
struct LocatedModule
{
    ModuleEntry entry;
    QString file;
};

/// Runs the workers, each in a thread of its own: starts them in the order of the configuration, and
/// stops them in the reverse order.
///
/// Thread: the main thread. Calls block for as long as the modules take.
class Host
{
public:
    /// Called before each worker is created; false ends the start.
    using GoOn = std::function<bool()>;

    /// The threads of the modules beat once per @p heartbeat; never if that is 0.
    explicit Host(std::chrono::milliseconds heartbeat);

    /// Calls stop().
    ~Host();

    /// Loads all libraries, then creates the workers one after another. If one fails, stops those that
    /// were created before it.
    std::optional<ExitFailure> start(const std::vector<LocatedModule> &modules, const GoOn &goOn);

    /// Deletes the workers in the reverse order of their creation, each in its thread, and joins each
    /// thread before the next worker is deleted.
    void stop();

    /// Hands each module its configuration from @p modules. Returns the keys, as MODULE.KEY, that need a
    /// restart. If a module refuses, hands those before it their @p previous configuration again.
    Result<QStringList> reconfigure(const QVector<ModuleEntry> &modules,
                                    const QVector<ModuleEntry> &previous);

    /// The name of a module whose thread has not beaten between the last three calls. So a process that was
    /// paused is not taken for one that hangs.
    std::optional<QString> hangingModule();

    int moduleCount() const { return static_cast<int>(m_threads.size()); }

private:
    std::chrono::milliseconds m_heartbeat;
    /// In the order of starting.
    std::vector<std::unique_ptr<ModuleThread>> m_threads;
    /// How many calls of hangingModule() in turn have found no beat of each of them.
    std::vector<int> m_missedBeats;
};
