// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <variant>

/// Why a text is no JSON.
struct JsonError
{
    QString reason;
};

/// Reads any JSON value: an object becomes a hash, an array a list, null an invalid variant, a whole
/// number an integer as small as will do, and {"base64": "..."} bytes.
std::variant<QVariant, JsonError> fromJson(const QByteArray &text);

enum class JsonForm { Line, Indented };

/// Writes any value that the model carries; fields in the order of their keys, integers of 64 bits
/// with all their digits, an invalid variant and a number that is none as null.
QByteArray toJson(const QVariant &value, JsonForm form);
