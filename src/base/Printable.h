// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <string>

/// Whether a code point must not reach a terminal or a log as it is, because it controls the terminal,
/// ends the line, or changes the direction in which the text around it is shown. The marks U+200E,
/// U+200F and U+061C are safe: they do no more than a letter of their script does.
constexpr bool isUnsafeToPrint(uint code)
{
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool isSeparator = code == 0x2028 || code == 0x2029;
    const bool setsDirection =
        (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return isControl || isSeparator || setsDirection;
}

/// Whether the text has no character that is unsafe to print.
bool isPrintable(const QString &text);

/// The text with every unsafe character as an escape: \n, \x1b, \x202e.
QString printable(const QString &text);

/// Returns the text unchanged if it is at most this long; otherwise its beginning, the number of
/// characters left out, and its end.
QString shortened(const QString &text, int maxSize);

/// A value within a record of the log: printable, without passwords of URLs, and shortened to 200
/// characters.
std::string logText(const QString &value);
