// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/LogLevels.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace {
struct NamedLevel
{
    const char *name;
    log4cplus::LogLevel level;
};

constexpr std::array<NamedLevel, 7> namedLevels = {{
    {"TRACE", log4cplus::TRACE_LOG_LEVEL},
    {"DEBUG", log4cplus::DEBUG_LOG_LEVEL},
    {"INFO", log4cplus::INFO_LOG_LEVEL},
    {"WARN", log4cplus::WARN_LOG_LEVEL},
    {"ERROR", log4cplus::ERROR_LOG_LEVEL},
    {"FATAL", log4cplus::FATAL_LOG_LEVEL},
    {"OFF", log4cplus::OFF_LOG_LEVEL},
}};
} // namespace

std::optional<log4cplus::LogLevel> logLevelFromName(const QString &name)
{
    const auto found =
        std::find_if(namedLevels.begin(), namedLevels.end(), [&name](const auto &level) {
            return name.compare(QLatin1String(level.name), Qt::CaseInsensitive) == 0;
        });
    if (found == namedLevels.end()) {
        return std::nullopt;
    }
    return found->level;
}

QString logLevelNames()
{
    QStringList names;
    for (const auto &level : namedLevels) {
        names << QLatin1String(level.name);
    }
    return names.join(QLatin1String(", "));
}

std::optional<LogLevel> logLevelFromText(const QString &text)
{
    const int separator = text.lastIndexOf(QLatin1Char('='));
    if (separator == 0) {
        return std::nullopt;
    }
    const auto level = logLevelFromName(text.mid(separator + 1));
    if (!level) {
        return std::nullopt;
    }
    return LogLevel{text.left(qMax(separator, 0)), *level};
}
