// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QCommandLineParser>
#include <QStringList>

#include <optional>

/// The options that the programs have in common.
struct CommonOptions
{
    QCommandLineOption config{QStringLiteral("config"),
                              QStringLiteral("Read the configuration from <file>."),
                              QStringLiteral("file")};
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Show this help.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                               QStringLiteral("Show the version.")};

    /// Lets the parser read the arguments, which begin with the program's name and may only be options.
    /// Returns what is wrong with them, if something is.
    std::optional<Failure> parse(QCommandLineParser &parser, const QStringList &arguments) const;
};
