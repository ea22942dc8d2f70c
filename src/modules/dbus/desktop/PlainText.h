// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// What a person reads of a text that may carry the markup of desktop notifications.
///
/// Tags of that markup go, with line breaks where <br> and <p> ask for them and the alternative text
/// of an <img>; what is no such tag ("a < b", "<user@example.org>") is text and stays. Entities become
/// their characters, those of no valid character U+FFFD, unknown ones stay as they are. What would
/// control a terminal goes. The result is to be shown as it is, never as markup again.
///
/// Takes a time that grows with the text's length alone, and no stack.
QString plainText(const QString &markup);

/// A text without markup as one line: line breaks and tabs become blanks, other controls go.
QString plainLine(const QString &text);
