// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fuzz/support/ValueFormat.h"

#include <QByteArray>
#include <QVariant>

/// Writes values for seeds in the format of ValueReader.
class ValueWriter
{
public:
    void byte(int number) { m_bytes.append(char(number)); }
    template <typename T>
    void number(T value)
    {
        m_bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
    }
    void raw(const QByteArray &bytes) { m_bytes.append(bytes); }
    void tag(FuzzTag tag) { byte(int(tag)); }

    void text(const QString &text);
    void value(const QVariant &value);

    /// Opens 2^exponent levels. The inner value must follow.
    void nested(int kind, int exponent, const QString &key);

    const QByteArray &bytes() const { return m_bytes; }

private:
    template <typename Fields>
    void fields(FuzzTag kind, const Fields &fields);

    QByteArray m_bytes;
};
