// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// Removes the markup of desktop notifications from a text.
///
/// Known tags are removed; <br> and <p> leave line breaks, an <img> its alternative text. What is not
/// such a tag ("a < b", "<user@example.org>") is text and stays. Known entities become their
/// characters, and U+FFFD where the number is not a character's; unknown ones stay. Control characters
/// other than line feed and tab are dropped. Show the result as it is, never as markup again.
///
/// The time grows linearly with the text's length.
QString plainText(const QString &markup);

/// A text without markup as one line: line breaks and tabs become spaces, other control characters are
/// dropped.
QString plainLine(const QString &text);
