// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/base/stream.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <string>

/// Renders a function's signature for a trace line, in the same way for every compiler. The
/// logger's name is not used.
TAVO_API_EXPORT std::string dbglog_scopedFunction(const std::string &signature,
                                                  const std::string &logger);

/// Writes the "Leave " line of a function when its scope ends; TAVO_SCOPE makes one.
///
/// Used in the thread of the function. Costs only the level check if the level is disabled.
class TAVO_API_EXPORT DbglogScope
{
public:
    /// For TAVO_SCOPE. The logger must outlive the scope; the texts are not copied.
    DbglogScope(const log4cplus::Logger &logger, log4cplus::LogLevel level, const char *signature,
                const char *file, int line, const char *function);
    ~DbglogScope();

    DbglogScope(const DbglogScope &) = delete;
    DbglogScope &operator=(const DbglogScope &) = delete;

    /// Returns whether the logger writes records of the level.
    bool isEnabledFor(log4cplus::LogLevel level) const { return m_logger.isEnabledFor(level); }

    /// Sets the text after the signature, and the level.
    void setLeave(log4cplus::LogLevel level, const std::string &text);

private:
    const log4cplus::Logger &m_logger;
    log4cplus::LogLevel m_level;
    const char *m_signature;
    const char *m_file;
    int m_line;
    const char *m_function;
    std::string m_text;
};

/// Opens a traced function: writes "Enter <signature>: <args>" now and "Leave <signature>: <text>"
/// at the end of the scope, both at the level (TRACE, DEBUG, INFO). The args are a stream
/// expression, which is evaluated only if the level is enabled:
///     TAVO_SCOPE(logger, TRACE, "id: " << id);
#define TAVO_SCOPE(logger, level, args)                                                            \
    LOG4CPLUS_##level(logger, "Enter " << dbglog_scopedFunction(Q_FUNC_INFO, (logger).getName())   \
                                       << ": " << args); /* NOLINT(bugprone-macro-parentheses) */  \
    DbglogScope dbglogScope(logger, log4cplus::level##_LOG_LEVEL, Q_FUNC_INFO, __FILE__, __LINE__, \
                            LOG4CPLUS_MACRO_FUNCTION())

/// Sets the text and the level of the "Leave " line of the enclosing TAVO_SCOPE.
#define TAVO_LEAVE(level, args)                                                                    \
    do {                                                                                           \
        if (dbglogScope.isEnabledFor(log4cplus::level##_LOG_LEVEL)) {                              \
            std::ostringstream dbglogText;                                                         \
            dbglogText << args; /* NOLINT(bugprone-macro-parentheses) */                           \
            dbglogScope.setLeave(log4cplus::level##_LOG_LEVEL, dbglogText.str());                  \
        } else {                                                                                   \
            dbglogScope.setLeave(log4cplus::level##_LOG_LEVEL, {});                                \
        }                                                                                          \
    } while (false)
