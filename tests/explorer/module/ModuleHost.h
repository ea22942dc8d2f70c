// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/clock/VirtualClock.h"
#include "support/LogCapture.h"
#include <core/tavo.h>

#include <QCoreApplication>

#include <functional>
#include <memory>
#include <string>

/// A process's side of the modules that are explored in it: the application, a clock that stands
/// still, a log that keeps fatal records only, and the module's library, loaded once.
class ModuleHost
{
public:
    /// The function is told why the process dies, if an assertion is the reason.
    ModuleHost(const std::string &module, std::function<void(const char *)> lastWords);

    /// A fresh worker, made as a host makes it.
    std::unique_ptr<CMWorker> makeWorker();

    VirtualClock &clock() { return m_clock; }

    /// Fatal records of the module so far.
    int fatalRecords() const;

    /// Delivers all that is posted, and all that is posted on the way, and deletes what is to be
    /// deleted later. No time passes.
    static void settle();

    /// Sends the request and settles; gives its reply.
    static CMReply<QVariant> request(const CMPath &path, const QVariant &value);

private:
    using WorkerCreate = void *(*)(const char *, void *);

    QVariantHash m_config;
    std::unique_ptr<QCoreApplication> m_application;
    std::unique_ptr<LogCapture> m_log;
    VirtualClock m_clock;
    WorkerCreate m_create = nullptr;
};
