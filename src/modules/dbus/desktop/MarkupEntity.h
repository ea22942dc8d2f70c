// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QStringRef>

#include <optional>

/// An entity of markup, such as "&amp;" or "&#8364;".
struct MarkupEntity
{
    uint character; ///< U+FFFD for a number that is not a character's, a line feed for U+000D
    int size;       ///< of the entity in the markup

    /// The entity at the beginning of the markup, if there is a known one.
    static std::optional<MarkupEntity> read(const QStringRef &markup);
};
