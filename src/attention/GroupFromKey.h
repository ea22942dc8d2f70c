// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/base/configuration.h>

#include <optional>

/// Reads from how many messages on they are shown as one; 0: never. Nothing if the key is missing.
inline std::optional<int> readGroupFrom(TavoConfiguration &configuration)
{
    constexpr int maxGroupFrom = 1000;
    const QString key = QStringLiteral("groupFrom");
    const int from = configuration.integer(key, -1, 0, maxGroupFrom);
    if (from == 1) {
        configuration.fail(key, QStringLiteral("must be at least 2, or 0 for never"));
    }
    return from < 0 ? std::nullopt : std::optional(from);
}
