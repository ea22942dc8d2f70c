// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QStringList>

/// The arguments of the program.
struct CommandLine
{
    enum class Action { Run, Check, ShowHelp, ShowVersion };

    Action action = Action::Run;
    QString configurationFile = QStringLiteral("/etc/tavo/fleet.json");
    QString bus; ///< empty: as configured

    /// Reads the arguments, which begin with the program's name.
    static Result<CommandLine> parse(const QStringList &arguments);

    static QString helpText();
};
