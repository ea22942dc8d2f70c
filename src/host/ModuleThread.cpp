// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/ModuleThread.h"

#include "core/model/cmworker.h"

#include <log4cplus/thread/threads.h>

#include <exception>
#include <utility>

ModuleThread::ModuleThread(ModuleEntry entry, WorkerCreate create)
    : m_entry(std::move(entry))
    , m_nameBytes(m_entry.name.toUtf8())
    , m_create(create)
{
    setObjectName(m_entry.name);
}

ModuleThread::~ModuleThread()
{
    stopWorker();
}

std::optional<Failure> ModuleThread::startWorker()
{
    auto created = m_created.get_future();
    start();
    auto failure = created.get();
    if (failure) {
        wait();
    }
    return failure;
}

void ModuleThread::stopWorker()
{
    quit();
    wait();
}

void ModuleThread::run()
{
    log4cplus::thread::setCurrentThreadName(m_nameBytes.toStdString());
    auto created = createWorker();
    if (const auto *failure = std::get_if<Failure>(&created)) {
        m_created.set_value(*failure);
        return;
    }
    const auto worker = std::get<std::unique_ptr<CMWorker>>(std::move(created));
    m_created.set_value(std::nullopt);
    exec();
}

Result<std::unique_ptr<CMWorker>> ModuleThread::createWorker()
{
    // An exception that left the thread would end the process without deleting the other workers.
    void *created = nullptr;
    try {
        created = m_create(m_nameBytes.constData(), &m_entry.config);
    } catch (const std::exception &exception) {
        return Failure{QStringLiteral("worker_create threw an exception: %1")
                           .arg(QString::fromLocal8Bit(exception.what()))};
    } catch (...) {
        return Failure{QStringLiteral("worker_create threw something that is no std::exception")};
    }
    if (created == nullptr) {
        return Failure{QStringLiteral("worker_create returned no worker")};
    }
    return std::unique_ptr<CMWorker>(static_cast<CMWorker *>(created));
}
