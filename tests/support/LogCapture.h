// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/loglevel.h>

#include <iosfwd>
#include <string>
#include <vector>

/// Captures the records of one logger for as long as it lives.
///
/// Sets the logger's own level and replaces its appenders; nothing reaches the root's appenders. The
/// destructor restores everything. Records may come from any thread.
class LogCapture
{
public:
    struct Record
    {
        log4cplus::LogLevel level;
        std::string message;
        std::string file;     ///< with the folders, as the compiler gives it
        std::string function; ///< the whole signature, as the compiler gives it
        int line;

        /// The file's name without its folders.
        std::string fileName() const;
    };
    using Records = std::vector<Record>;

    explicit LogCapture(const std::string &loggerName,
                        log4cplus::LogLevel level = log4cplus::TRACE_LOG_LEVEL);
    ~LogCapture();

    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// Changes the logger's level; the destructor restores it.
    void setLevel(log4cplus::LogLevel level);

    /// The records so far, oldest first.
    Records records() const;

    /// Only the messages, oldest first: compare with ElementsAre().
    std::vector<std::string> messages() const;
    std::vector<std::string> messages(log4cplus::LogLevel level) const;

    /// How many records have exactly that message (and that level).
    int count(const std::string &message) const;
    int count(log4cplus::LogLevel level, const std::string &message) const;

    /// How many records have that level.
    int countAt(log4cplus::LogLevel level) const;

    bool contains(const std::string &message) const { return count(message) > 0; }

    /// The records whose message contains the text.
    Records find(const std::string &part) const;

    void clear();

private:
    class Sink;

    template <typename Predicate>
    Records select(Predicate predicate) const;

    log4cplus::Logger m_logger;
    log4cplus::LogLevel m_oldLevel;
    bool m_oldAdditivity;
    log4cplus::SharedAppenderPtrList m_oldAppenders;
    log4cplus::helpers::SharedObjectPtr<Sink> m_sink;
};

/// For the messages of failed expectations.
void PrintTo(const LogCapture::Record &record, std::ostream *stream);
