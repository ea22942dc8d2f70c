// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/ModuleThread.h"

#include "core/model/cmworker.h"

#include <log4cplus/thread/threads.h>

#include <exception>
#include <memory>
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

std::optional<QString> ModuleThread::startWorker()
{
    auto created = m_created.get_future();
    start();
    auto error = created.get();
    if (error) {
        wait();
    }
    return error;
}

void ModuleThread::stopWorker()
{
    quit();
    wait();
}

void ModuleThread::run()
{
    log4cplus::thread::setCurrentThreadName(m_nameBytes.toStdString());
    void *created = nullptr;
    auto error = createWorker(&created);
    const bool failed = error.has_value();
    const std::unique_ptr<CMWorker> worker(static_cast<CMWorker *>(created));
    m_created.set_value(std::move(error));
    if (!failed) {
        exec();
    }
}

std::optional<QString> ModuleThread::createWorker(void **worker)
{
    // An exception must not leave the thread, where it would end the process before the workers
    // that run already could be deleted.
    try {
        *worker = m_create(m_nameBytes.constData(), &m_entry.config);
    } catch (const std::exception &exception) {
        return QStringLiteral("worker_create threw an exception: %1")
            .arg(QString::fromLocal8Bit(exception.what()));
    } catch (...) {
        return QStringLiteral("worker_create threw something that is no std::exception");
    }
    if (*worker == nullptr) {
        return QStringLiteral("worker_create returned no worker");
    }
    return std::nullopt;
}
