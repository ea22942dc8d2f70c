// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/HostConfiguration.h"
#include "host/LogGate.h"

#include <QTimer>

#include <log4cplus/initializer.h>

#include <map>
#include <memory>
#include <string>
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
    /// Sets these levels, and no others that were set before.
    void setLevels(const QVector<LogLevel> &levels);

    HostLog(const HostLog &) = delete;
    HostLog &operator=(const HostLog &) = delete;

private:
    HostLog();

    void guardAppenders();

    log4cplus::Initializer m_initializer;
    std::vector<log4cplus::helpers::SharedObjectPtr<LogGate>> m_gates;
    /// Of the loggers whose level was set, by name.
    std::map<std::string, log4cplus::LogLevel> m_levelsBefore;
    QTimer m_leftOutTimer;
};
