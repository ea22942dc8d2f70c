// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QString>
#include <QVariant>

#include <iosfwd>

/// Writes a text as UTF-8. Control characters are written as escapes (\n, \x1b), so that a text
/// from outside can't break a log line or forge one.
TAVO_API_EXPORT std::ostream &operator<<(std::ostream &stream, const QString &text);

/// Writes a value on one line, the fields of a hash in the order of their keys. What nests deeper
/// than people read is written as "...".
TAVO_API_EXPORT std::ostream &operator<<(std::ostream &stream, const QVariant &value);
