// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/dbglog.h"

#include <cctype>

std::string dbglog_scopedFunction(const std::string &signature, const std::string & /*logger*/)
{
    std::string text;
    text.reserve(signature.size());
    for (std::size_t i = 0; i < signature.size(); ++i) {
        // Compilers differ in the spaces around "*" and "&" and between two ">".
        const bool starts = signature[i] == ' ' && i > 0 && i + 1 < signature.size() &&
                            (signature[i + 1] == '*' || signature[i + 1] == '&' ||
                             (signature[i + 1] == '>' && signature[i - 1] == '>'));
        if (starts) {
            continue;
        }
        text += signature[i];
        const bool ends = (signature[i] == '*' || signature[i] == '&') &&
                          i + 1 < signature.size() &&
                          (std::isalnum(static_cast<unsigned char>(signature[i + 1])) != 0 ||
                           signature[i + 1] == '_');
        if (ends) {
            text += ' ';
        }
    }
    static const std::string unnamed = "(anonymous namespace)";
    for (auto at = text.find(unnamed); at != std::string::npos; at = text.find(unnamed, at)) {
        text.replace(at, unnamed.size(), "{anonymous}");
    }
    return text;
}

DbglogScope::DbglogScope(const log4cplus::Logger &logger, log4cplus::LogLevel level,
                         const char *signature, const char *file, int line, const char *function)
    : m_logger(logger)
    , m_level(level)
    , m_signature(signature)
    , m_file(file)
    , m_line(line)
    , m_function(function)
{
}

DbglogScope::~DbglogScope()
{
    if (m_logger.isEnabledFor(m_level)) {
        m_logger.forcedLog(m_level,
                           "Leave " + dbglog_scopedFunction(m_signature, m_logger.getName()) +
                               ": " + m_text,
                           m_file, m_line, m_function);
    }
}

void DbglogScope::setLeave(log4cplus::LogLevel level, const std::string &text)
{
    m_level = level;
    m_text = text;
}
