// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/HostConfiguration.h"
#include "host/ModuleLoader.h"

#include <QByteArray>
#include <QThread>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <optional>

class CMWorker;

/// A thread that creates a worker, runs its event loop, and deletes it.
///
/// Thread: the main thread. Owned by Host.
class ModuleThread : public QThread
{
public:
    /// Far longer than a worker takes, and shorter than a service manager waits.
    static constexpr std::chrono::seconds maxStop{30};

    /// The thread beats once per @p heartbeat for as long as the worker does not hang; never if that is 0.
    ModuleThread(ModuleEntry entry, WorkerCreate create, std::chrono::milliseconds heartbeat = {});

    /// Calls stopWorker().
    ~ModuleThread() override;

    const QString &name() const { return m_entry.name; }

    /// Whether the thread has beaten since the last call.
    bool takeBeat() { return m_hasBeaten.exchange(false); }

    /// Starts the thread and waits until worker_create has returned. If it fails, the thread has
    /// ended.
    std::optional<Failure> startWorker();

    /// Hands the worker a changed configuration. Returns the keys that need a restart, or why the worker
    /// refuses it or does not react. Called while the worker runs.
    Result<QStringList> reconfigure(const QVariantHash &config);

    /// Deletes the worker in its thread and waits until the thread has ended. Queued calls to the
    /// worker are dropped. If the worker hangs for longer than the limit, logs that and ends the
    /// process.
    void stopWorker(std::chrono::milliseconds limit = maxStop);

protected:
    void run() override;

private:
    Result<std::unique_ptr<CMWorker>> createWorker();

    ModuleEntry m_entry;
    QByteArray m_nameBytes; ///< passed to worker_create, valid for as long as the worker
    WorkerCreate m_create;
    CMWorker *m_worker = nullptr; ///< set once, before startWorker() returns
    std::chrono::milliseconds m_heartbeat;
    std::atomic<bool> m_hasBeaten{false};
    std::promise<std::optional<Failure>> m_created;
};
