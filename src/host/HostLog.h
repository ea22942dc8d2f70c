// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/HostConfiguration.h"

#include <log4cplus/initializer.h>

#include <memory>

/// Logging while the host runs: the console on standard error or what a log4cplus properties file
/// says, and Qt's own messages under the logger "Qt" (or "Qt.<category>"). A fatal message of Qt
/// is also printed on standard error in full, whatever the log's settings, before Qt aborts.
///
/// Thread: the main thread; one at a time, made before any module is loaded.
class HostLog
{
public:
    static Result<std::unique_ptr<HostLog>> open(const LogConfiguration &configuration,
                                                 const QString &configurationSource);
    ~HostLog();
    HostLog(const HostLog &) = delete;
    HostLog &operator=(const HostLog &) = delete;

private:
    HostLog();

    log4cplus::Initializer m_initializer;
};
