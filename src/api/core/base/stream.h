// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QString>
#include <QVariant>

#include <iosfwd>

/// Writes a text as UTF-8. Control characters are written as escapes (\n, \x1b), so that a client's
/// text cannot break or forge a log line.
TAVO_API_EXPORT std::ostream &operator<<(std::ostream &stream, const QString &text);

/// Writes a value on one line, the fields of a hash sorted by key. Values that are nested too
/// deeply to be read are written as "...".
TAVO_API_EXPORT std::ostream &operator<<(std::ostream &stream, const QVariant &value);
