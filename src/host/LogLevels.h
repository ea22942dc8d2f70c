// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVector>

#include <log4cplus/loglevel.h>

#include <optional>

/// The level that one logger is to have.
struct LogLevel
{
    /// Empty for the root logger.
    QString logger;
    log4cplus::LogLevel level;
};

/// The level with this name, in either case; none where there is no such level.
std::optional<log4cplus::LogLevel> logLevelFromName(const QString &name);

/// The names that logLevelFromName() knows, for messages.
QString logLevelNames();

/// Reads "LEVEL" or "LOGGER=LEVEL"; nothing where the text is neither.
std::optional<LogLevel> logLevelFromText(const QString &text);
