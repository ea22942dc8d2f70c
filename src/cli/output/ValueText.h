// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariant>

/// A text on one line. Control characters are escaped, so that no text can steer the terminal.
QString oneLine(const QString &text);

/// A value for people: a scalar unchanged, a record as a line for each field, sorted, with nested
/// values indented, and a list as a line with a dash for each element.
QString valueText(const QVariant &value);
