// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/ModuleThread.h"

#include "core/base/connect.h"
#include "core/model/cmreconfigurable.h"
#include "core/model/cmworker.h"
#include "host/ExitCode.h"

#include <QTimer>

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>
#include <log4cplus/mdc.h>
#include <log4cplus/thread/threads.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <future>
#include <utility>

namespace {
/// Workers do nothing that takes longer. One that hangs must not keep the host from its other duties.
constexpr std::chrono::seconds maxReconfigure{3};

QStringList changedKeys(const QVariantHash &before, const QVariantHash &after)
{
    QStringList keys = before.keys() + after.keys();
    keys.removeDuplicates();
    keys.erase(
        std::remove_if(keys.begin(), keys.end(),
                       [&](const QString &key) { return before.value(key) == after.value(key); }),
        keys.end());
    keys.sort();
    return keys;
}
} // namespace

ModuleThread::ModuleThread(ModuleEntry entry, WorkerCreate create,
                           std::chrono::milliseconds heartbeat)
    : m_entry(std::move(entry))
    , m_nameBytes(m_entry.name.toUtf8())
    , m_create(create)
    , m_heartbeat(heartbeat)
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

Result<QStringList> ModuleThread::reconfigure(const QVariantHash &config)
{
    using Task = std::packaged_task<Result<QStringList>()>;
    const auto task = std::make_shared<Task>([this, config]() -> Result<QStringList> {
        auto *reconfigurable = dynamic_cast<CMReconfigurable *>(m_worker);
        if (reconfigurable == nullptr) {
            return changedKeys(m_entry.config, config);
        }
        try {
            return reconfigurable->reconfigure(config);
        } catch (const std::exception &exception) {
            return Failure{QString::fromLocal8Bit(exception.what())};
        }
    });
    auto result = task->get_future();
    // A worker that reacts too late finds no task.
    const std::weak_ptr<Task> queued = task;
    QMetaObject::invokeMethod(
        m_worker,
        [queued] {
            if (const auto kept = queued.lock()) {
                (*kept)();
            }
        },
        Qt::QueuedConnection);
    if (result.wait_for(maxReconfigure) != std::future_status::ready) {
        return Failure{QStringLiteral("the module hangs")};
    }
    return result.get();
}

void ModuleThread::stopWorker(std::chrono::milliseconds limit)
{
    quit();
    if (!wait(static_cast<unsigned long>(limit.count()))) {
        LOG4CPLUS_FATAL(log4cplus::Logger::getInstance("Host"),
                        "Ending at once, because a module hangs: " << name().toStdString());
        std::_Exit(static_cast<int>(ExitCode::WorkerFailed));
    }
}

void ModuleThread::run()
{
    log4cplus::thread::setCurrentThreadName(m_nameBytes.toStdString());
    log4cplus::getMDC().put("module", m_nameBytes.toStdString());
    auto created = createWorker();
    if (const auto *failure = std::get_if<Failure>(&created)) {
        m_created.set_value(*failure);
        return;
    }
    const auto worker = std::get<std::unique_ptr<CMWorker>>(std::move(created));
    m_worker = worker.get();
    m_created.set_value(std::nullopt);
    QTimer heartbeat;
    if (m_heartbeat.count() > 0) {
        tavoConnect(&heartbeat, &QTimer::timeout, &heartbeat, [this] { m_hasBeaten = true; });
        heartbeat.start(m_heartbeat);
    }
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
