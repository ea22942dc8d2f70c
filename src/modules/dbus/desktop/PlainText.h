// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// In UTF-16 code units. Nobody reads more, and many texts may be stored.
constexpr int maxTextLength = 65536;
constexpr int maxLineLength = 1000;

/// Each can take 20 characters.
constexpr int maxEmphasisChanges = 1000;

/// The body of a desktop notification.
struct BodyText
{
    QString text; ///< plain; may look like markup
    /// The same text with <b>, <i> and <u> where it is emphasised, in the form of TavoRoles::markup().
    /// Empty if nothing is.
    QString markup;
};

/// Reads the markup of a body.
///
/// Known tags are removed, <b>, <i> and <u> (and <strong> and <em>) kept as emphasis; <br> and <p> leave line breaks, an <img> its alternative text. Anything
/// else that looks like a tag ("a < b", "<user@example.org>") is text and stays. Known entities
/// become their characters; unknown ones stay. A number becomes U+FFFD if its character does not
/// exist or is unsafe to print. Every line ending becomes a line feed. Other characters that are
/// unsafe to print are dropped, except tabs.
///
/// The time grows linearly with the text's length. What comes after maxTextLength is not read; after
/// maxEmphasisChanges, emphasis is not kept.
BodyText readBody(const QString &markup);

/// A text without markup as one line: line breaks and tabs become spaces, other characters that are
/// unsafe to print are dropped. What comes after maxLineLength is not read.
QString plainLine(const QString &text);
