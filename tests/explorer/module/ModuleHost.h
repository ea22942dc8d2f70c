// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/engine/Program.h"
#include "support/clock/VirtualClock.h"
#include "support/LogCapture.h"
#include <core/tavo.h>

#include <QCoreApplication>

#include <functional>
#include <memory>
#include <string>

/// What a working process needs to run the module: the application, a virtual clock, a log that
/// keeps fatal records only, and the module's library, loaded once.
class ModuleHost
{
public:
    /// The function is called with an assertion's text before the process dies of it.
    ModuleHost(const std::string &module, std::function<void(const char *)> lastWords);

    /// Makes a worker as a host does.
    std::unique_ptr<CMWorker> makeWorker();

    VirtualClock &clock() { return m_clock; }

    /// The number of the module's fatal records so far.
    int fatalRecords() const;

    /// Delivers all posted events until there are none, deferred deletions included. No time
    /// passes.
    static void settle();

    /// Sends the request, settles, and returns the reply.
    static CMReply<QVariant> request(const CMPath &path, const QVariant &value);

private:
    using WorkerCreate = void *(*)(const char *, void *);

    QVariantHash m_config;
    std::unique_ptr<QCoreApplication> m_application;
    std::unique_ptr<LogCapture> m_log;
    VirtualClock m_clock;
    WorkerCreate m_create = nullptr;
};

/// Runs an explorer of the module. Ends log4cplus's threads before, which start with the first logger,
/// because only a process with one thread can be forked.
int runExplorer(const exploration::Program &program, int argc, char **argv);
