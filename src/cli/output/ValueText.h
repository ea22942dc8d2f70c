// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariant>

/// A text on one line: control characters as escapes, so that one from outside can't move the
/// cursor or change the colours of a terminal.
QString oneLine(const QString &text);

/// A value for people: a scalar as it is, a record as a line a field, sorted, what is in it
/// indented below; a list's elements behind a dash.
QString valueText(const QVariant &value);
