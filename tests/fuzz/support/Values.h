// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QVariant>

/// Whether two values are the same to the last bit and type: not-a-number is the same as itself, and
/// 2 is not the same as "2".
bool isSame(const QVariant &left, const QVariant &right);

/// Whether a value is what records are made of, all the way down: numbers, truth values, texts,
/// bytes, lists and hashes.
bool isPlainData(const QVariant &value);
