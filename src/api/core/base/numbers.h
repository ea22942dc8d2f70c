// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QVariant>

// Numbers in variants. A value of another type, or out of range, reads as 0 or false.

/// Returns whether a variant holds a number of any type. A string of digits is not a number, and
/// neither is a boolean.
TAVO_API_EXPORT bool tavoIsNumber(const QVariant &value);

/// Reads an integer within the range. A number with a fraction reads as 0.
TAVO_API_EXPORT qint64 tavoReadInteger(const QVariant &value, qint64 min, qint64 max);

/// Reads a boolean from a boolean, or from a number, which is true unless it is 0.
TAVO_API_EXPORT bool tavoReadBool(const QVariant &value);

/// Reads any number.
TAVO_API_EXPORT double tavoReadDouble(const QVariant &value);
