// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "host/LogQueue.h"

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <tuple>

/// Filters every record before the appenders of a logger write it, so that no client can forge or
/// hide a record or fill the disk, and no password gets into the log:
/// - Characters that are unsafe to print are escaped, and user names and passwords of URLs removed.
/// - A text of more than 4000 characters is shortened.
/// - If one line of the source logs more than 100 records from INFO up within a second, only the
///   first 100 are written. The number left out is written later, by writeLeftOut() or before the
///   next record after that second.
///
/// Thread: any. Owned by the logger.
class LogGate : public log4cplus::Appender
{
public:
    static constexpr int maxTextSize = 4000;
    static constexpr int maxRecordsPerSecond = 100;

    /// Puts a gate in front of the appenders that the logger has. The gate calls the function, in
    /// any thread, when it begins to leave records out.
    static log4cplus::helpers::SharedObjectPtr<LogGate> guard(log4cplus::Logger logger,
                                                              std::function<void()> onLeavingOut);
    ~LogGate() override;

    /// Writes how many records have been left out.
    void writeLeftOut();

    void close() override;

protected:
    void append(const log4cplus::spi::InternalLoggingEvent &event) override;

private:
    using Clock = std::chrono::steady_clock;

    /// A line of the source, by its file, number and logger. Qt's messages may come without the
    /// first two.
    using Place = std::tuple<std::string, int, std::string>;

    /// The records of a place since its second began.
    struct Second
    {
        Clock::time_point start;
        int records = 0;
        int leftOut = 0;
        log4cplus::LogLevel level = log4cplus::NOT_SET_LOG_LEVEL;
        std::string example; ///< the first that was left out
    };

    LogGate(log4cplus::SharedAppenderPtrList appenders, std::function<void()> onLeavingOut);

    bool isLeftOut(const log4cplus::spi::InternalLoggingEvent &event);
    void endSeconds(Clock::time_point startedBefore);
    void write(const log4cplus::spi::InternalLoggingEvent &event);

    std::unique_ptr<LogQueue> m_queue; ///< until it is closed
    const std::function<void()> m_onLeavingOut;
    std::map<Place, Second, std::less<>> m_seconds;
    int m_placesLeavingOut = 0;
};
