// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

/// Reads any JSON value: an object becomes a hash, an array a list, null an invalid variant, a whole
/// number an integer as small as will do, and {"base64": "..."} bytes.
Result<QVariant> fromJson(const QByteArray &text);

enum class JsonForm { Line, Indented };

/// Writes any value that the model carries: fields in the order of their keys, 64 bit integers with
/// all their digits, and invalid variants, infinities and not-a-number as null.
QByteArray toJson(const QVariant &value, JsonForm form);
