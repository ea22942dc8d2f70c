// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/Host.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <utility>

namespace {
log4cplus::Logger &logger()
{
    static log4cplus::Logger s_logger = log4cplus::Logger::getInstance("Host");
    return s_logger;
}

ExitFailure failureOf(const ModuleEntry &module, ExitCode code, const QString &reason)
{
    return {code, QStringLiteral("%1: %2").arg(module.origin, reason)};
}

/// Null for a module that is configured no longer.
const ModuleEntry *entryOf(const ModuleThread &thread, const QVector<ModuleEntry> &modules)
{
    const auto entry = std::find_if(modules.begin(), modules.end(), [&](const auto &module) {
        return module.name == thread.name();
    });
    return entry == modules.end() ? nullptr : &*entry;
}
} // namespace

Host::Host(std::chrono::milliseconds heartbeat)
    : m_heartbeat(heartbeat)
{
}

Host::~Host()
{
    stop();
}

std::optional<ExitFailure> Host::start(const std::vector<LocatedModule> &modules, const GoOn &goOn)
{
    std::vector<std::unique_ptr<ModuleThread>> threads;
    for (const LocatedModule &module : modules) {
        auto entryPoint = ModuleLoader::load(module.file);
        if (const auto *failure = std::get_if<Failure>(&entryPoint)) {
            return failureOf(module.entry, ExitCode::ModuleUnavailable, failure->reason);
        }
        threads.push_back(std::make_unique<ModuleThread>(
            module.entry, std::get<WorkerCreate>(entryPoint), m_heartbeat));
    }
    for (auto &thread : threads) {
        if (!goOn()) {
            return std::nullopt;
        }
        if (const auto failure = thread->startWorker()) {
            const ModuleEntry &entry = modules[m_threads.size()].entry;
            stop();
            return failureOf(entry, ExitCode::WorkerFailed, failure->reason);
        }
        LOG4CPLUS_INFO(logger(), "Module started: " << thread->name().toStdString());
        m_threads.push_back(std::move(thread));
    }
    return std::nullopt;
}

void Host::stop()
{
    while (!m_threads.empty()) {
        const auto thread = std::move(m_threads.back());
        m_threads.pop_back();
        thread->stopWorker();
        LOG4CPLUS_INFO(logger(), "Module stopped: " << thread->name().toStdString());
    }
}

Result<QStringList> Host::reconfigure(const QVector<ModuleEntry> &modules,
                                      const QVector<ModuleEntry> &previous)
{
    QStringList restartKeys;
    for (auto thread = m_threads.begin(); thread != m_threads.end(); ++thread) {
        const ModuleEntry *entry = entryOf(**thread, modules);
        if (entry == nullptr) {
            continue;
        }
        auto keys = (*thread)->reconfigure(entry->config);
        if (const auto *failure = std::get_if<Failure>(&keys)) {
            while (thread != m_threads.begin()) {
                --thread;
                if (const ModuleEntry *before = entryOf(**thread, previous)) {
                    (*thread)->reconfigure(before->config);
                }
            }
            return Failure{QStringLiteral("%1: %2").arg(entry->origin, failure->reason)};
        }
        for (const QString &key : qAsConst(std::get<QStringList>(keys))) {
            restartKeys << QStringLiteral("%1.%2").arg((*thread)->name(), key);
        }
    }
    return restartKeys;
}

std::optional<QString> Host::hangingModule()
{
    constexpr int maxMissedBeats = 1;
    m_missedBeats.resize(m_threads.size());
    for (size_t i = 0; i < m_threads.size(); ++i) {
        m_missedBeats[i] = m_threads[i]->takeBeat() ? 0 : m_missedBeats[i] + 1;
        if (m_missedBeats[i] > maxMissedBeats) {
            return m_threads[i]->name();
        }
    }
    return std::nullopt;
}
