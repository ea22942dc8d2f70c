// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "display/DisplayConfiguration.h"

#include <QStringList>

#include <optional>

/// The arguments of the program.
struct CommandLine
{
    enum class Action { Run, Demo, Check, History, ShowHelp, ShowVersion };

    Action action = Action::Run;
    QString configurationFile; ///< empty: the usual one, if there is one
    QString bus;               ///< empty: as configured
    std::optional<DisplayConfiguration::Mode> mode;

    /// Reads the arguments, which begin with the program's name.
    static Result<CommandLine> parse(const QStringList &arguments);

    static QString helpText();
};
