// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/HostConfiguration.h"

#include <log4cplus/initializer.h>

#include <memory>

/// Logging while the host runs: to standard error, or as a log4cplus properties file says. Qt's
/// messages are logged too.
///
/// Thread: the main thread. One at a time, opened before any module is loaded.
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
