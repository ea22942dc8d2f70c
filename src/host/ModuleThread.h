// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "host/HostConfiguration.h"
#include "host/ModuleLoader.h"

#include <QByteArray>
#include <QThread>

#include <future>
#include <optional>

/// One worker and the thread that it lives in: made there, run there, deleted there.
///
/// Thread: the host's. Owner: Host. The module's name and configuration live here for as long as
/// the worker does.
class ModuleThread : public QThread
{
public:
    ModuleThread(ModuleEntry entry, WorkerCreate create);

    /// Stops the worker, if it runs.
    ~ModuleThread() override;

    const QString &name() const { return m_entry.name; }

    /// Starts the thread and returns when worker_create has: with nothing when there is a worker,
    /// otherwise with the reason why there is none; the thread has ended in that case.
    std::optional<QString> startWorker();

    /// Deletes the worker in its thread and returns when the thread has ended. Calls that wait in
    /// the thread's event loop are not delivered any more.
    void stopWorker();

protected:
    void run() override;

private:
    std::optional<QString> createWorker(void **worker);

    ModuleEntry m_entry;
    /// What worker_create is given: bytes that live as long as the worker.
    QByteArray m_nameBytes;
    WorkerCreate m_create;
    std::promise<std::optional<QString>> m_created;
};
