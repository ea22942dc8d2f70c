// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

/// Reads any JSON value: an object becomes a hash, an array a list, null an invalid variant, an integer
/// the smallest integer type that holds it, and {"base64": "..."} bytes.
Result<QVariant> fromJson(const QByteArray &text);

enum class JsonForm { Line, Indented };

/// Writes any value of the model: fields sorted by key, 64 bit integers with all their digits, invalid
/// variants, infinities and not-a-number as null, and what is unsafe to print as \u and four digits.
QByteArray toJson(const QVariant &value, JsonForm form);
