// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVector>

#include <log4cplus/loglevel.h>

#include <optional>

/// The level of one logger.
struct LogLevel
{
    /// Empty for the root logger.
    QString logger;
    log4cplus::LogLevel level;
};

/// The level with this name, in any case; empty for an unknown name.
std::optional<log4cplus::LogLevel> logLevelFromName(const QString &name);

/// The names of all levels, for messages.
QString logLevelNames();

/// Reads "LEVEL" or "LOGGER=LEVEL"; empty when the text is neither.
std::optional<LogLevel> logLevelFromText(const QString &text);
