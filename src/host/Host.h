// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "host/ExitCode.h"
#include "host/HostConfiguration.h"
#include "host/ModuleThread.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// A module that is about to run: what it was asked to be, and where it was found.
struct LocatedModule
{
    ModuleEntry entry;
    QString file;
};

/// Runs the workers: brings them up in the order of the configuration, each with its own thread,
/// and takes them down in the reverse order.
///
/// Thread: the main thread, in which the calls block for as long as modules take.
class Host
{
public:
    /// Asked between two modules whether to go on bringing them up.
    using GoOn = std::function<bool()>;

    /// Messages name the place of a module as a key of @p configuration.
    explicit Host(QString configurationSource);

    /// Stops what still runs.
    ~Host();

    /// Loads every library and only then makes the workers, each when the one before it is there.
    /// When one fails, those that were there have been deleted in the reverse order on return.
    std::optional<ExitFailure> start(const std::vector<LocatedModule> &modules, const GoOn &goOn);

    /// Deletes the workers in the reverse order of their making, each in its thread, and joins
    /// each thread before the next worker is deleted.
    void stop();

    int moduleCount() const { return static_cast<int>(m_threads.size()); }

private:
    ExitFailure failureOf(int index, ExitCode code, const QString &reason) const;

    QString m_configurationSource;
    /// In the order of starting.
    std::vector<std::unique_ptr<ModuleThread>> m_threads;
};
