// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// Writes results to standard output, and errors to standard error. Escapes every character that
/// could control the terminal, except line feeds, tabs and styles.
///
/// A terminal gets colours, unless NO_COLOR is set and not empty, and a live line: the last line of
/// standard error, which is rewritten until something else is printed.
class Terminal
{
public:
    enum class Style { Plain, Bold, Faint, Good, Bad, Notice };

    Terminal();
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    bool isTerminal() const { return m_isTerminal; }

    /// The text in that style, if there are colours.
    QString styled(const QString &text, Style style) const;

    /// Prints one or more lines on standard output and flushes them, for readers of a pipe. The
    /// caller makes values printable() first, so that they can't add lines or columns.
    void print(const QString &text);
    void printJson(const QByteArray &json);

    /// Prints a note for people, which is not part of the result: on the terminal, else on standard
    /// error.
    void printNote(const QString &text);

    /// Prints "tavo: " and the text on standard error.
    void printError(const QString &text);

    void showLive(const QString &text);
    void endLive();

    /// False if standard output could not be written, for example to a full disk. That error has been
    /// printed once.
    bool isGood() const { return m_isGood; }

private:
    void write(const QByteArray &line);

    const bool m_isTerminal;
    const bool m_hasLive;
    const bool m_hasColours;
    bool m_isLive = false;
    bool m_isGood = true;
};
