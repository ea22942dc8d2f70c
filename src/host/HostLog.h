// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/HostConfiguration.h"
#include "host/LogGate.h"

#include <QTimer>

#include <log4cplus/initializer.h>

#include <memory>
#include <vector>

/// Logging while the host runs: to standard error, or to wherever a log4cplus properties file says.
/// Qt's messages are logged too. A LogGate stands in front of all appenders.
///
/// Thread: the main thread. One at a time, opened before any module is loaded.
class HostLog
{
public:
    static Result<std::unique_ptr<HostLog>> open(const LogConfiguration &configuration);
    ~HostLog();
    HostLog(const HostLog &) = delete;
    HostLog &operator=(const HostLog &) = delete;

private:
    HostLog();

    void guardAppenders();

    log4cplus::Initializer m_initializer;
    std::vector<log4cplus::helpers::SharedObjectPtr<LogGate>> m_gates;
    QTimer m_leftOutTimer;
};
