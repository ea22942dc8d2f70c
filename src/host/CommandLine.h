// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "host/LogLevels.h"

#include <QStringList>
#include <QVector>

#include <optional>

/// The arguments of the program.
struct CommandLine
{
    enum class Action { Run, Check, ListModules, ShowHelp, ShowVersion };

    Action action = Action::Run;
    /// Empty for the built-in configuration.
    QString configurationFile;
    QStringList modulePath;
    QVector<LogLevel> logLevels;
    std::optional<int> readyDescriptor;

    /// Reads the arguments, which begin with the program's name.
    static Result<CommandLine> parse(const QStringList &arguments);

    static QString helpText();
};
