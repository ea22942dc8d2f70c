// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QString>
#include <QVariant>

#include <iosfwd>

/// Writes a text as UTF-8, for the log. Characters that end a line, control a terminal or change the
/// direction of the text are written as escapes (\n, \x1b), so that a client's text cannot break or
/// forge a log line. Names and passwords in URLs are left out. Only the beginning and the end of
/// a text longer than 200 characters are written.
TAVO_API_EXPORT std::ostream &operator<<(std::ostream &stream, const QString &text);

/// Writes a value on one line, the fields of a hash sorted by key. What is nested too deeply to be
/// read, or follows after 2000 bytes, is written as "...".
TAVO_API_EXPORT std::ostream &operator<<(std::ostream &stream, const QVariant &value);
