// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

#include <ostream>

/// A QString in a test, without the noise.
inline QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, int(size));
}

// How a failed expectation prints strings.
inline void PrintTo(const QString &text, std::ostream *stream)
{
    *stream << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QStringList &texts, std::ostream *stream)
{
    *stream << '[' << texts.join(", "_s).toStdString() << ']';
}
