// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

/// The longest text that is shown, in characters.
constexpr int maxShownLength = 4000;

/// The most combining marks that are shown on one character.
constexpr int maxShownMarks = 8;

/// No more of a text is read, in characters. Marks that are left out may be part of a run of a million, so
/// the search for the next character ends here.
constexpr int maxReadLength = 4 * maxShownLength;

/// A text as it may reach a text item: at most maxShownLength characters and maxShownMarks marks on
/// each, without control characters other than line feeds, and without those that change the direction
/// of the text around them. A text that is cut ends with an ellipsis. Reads no more of the text than it
/// has to.
QString shownText(const QString &text);

/// The same on one line.
QString shownLine(const QString &text);

/// The form that the model calls markup, as a text item with the format StyledText may get it: the tags
/// b, i and u, properly nested, line breaks, and nothing else. Everything that is no such tag is shown as
/// text. Limited like shownText().
QString styledText(const QString &markup);

/// The parts of a shown or styled text, in which all lines with letters are written in the same direction: a text
/// item aligns all of its lines like the first one. After maxTextParts, the rest stays in the last one.
QStringList textParts(const QString &text, bool isStyled);
constexpr int maxTextParts = 100;
