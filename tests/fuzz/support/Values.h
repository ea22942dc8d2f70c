// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QVariant>

/// Whether two values are identical, including their types: NaN equals itself, but 2 does not equal
/// "2".
bool isSame(const QVariant &left, const QVariant &right);

/// Whether a value consists only of what records are made of: numbers, booleans, strings, bytes,
/// lists and hashes.
bool isPlainData(const QVariant &value);
