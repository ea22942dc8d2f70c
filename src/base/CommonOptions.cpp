// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/CommonOptions.h"

std::optional<Failure> CommonOptions::parse(QCommandLineParser &parser,
                                            const QStringList &arguments) const
{
    if (!parser.parse(arguments)) {
        return Failure{parser.errorText()};
    }
    if (!parser.positionalArguments().isEmpty()) {
        return Failure{
            QStringLiteral("unexpected argument %1").arg(parser.positionalArguments()[0])};
    }
    if (parser.isSet(config) && parser.value(config).isEmpty()) {
        return Failure{QStringLiteral("--config needs the name of a file")};
    }
    return {};
}
