// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// Where the program writes: results on standard output, what went wrong on standard error.
///
/// On a terminal there are colours, unless NO_COLOR is set and not empty, and a live line: the last
/// line of standard error, written over and over and gone when something else is written. Elsewhere
/// there is neither.
class Terminal
{
public:
    enum class Style { Plain, Bold, Faint, Good, Bad, Notice };

    Terminal();
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    bool isTerminal() const { return m_isTerminal; }

    /// The text in that style where there are colours, and as it is elsewhere.
    QString styled(const QString &text, Style style) const;

    /// Prints a line, or several, on standard output at once: it may be a pipe that somebody follows.
    void print(const QString &text);
    void printJson(const QByteArray &json);

    /// Prints what is for people and no result: on the terminal, else on standard error.
    void printNote(const QString &text);

    /// Prints "tavo: " and the text on standard error.
    void printError(const QString &text);

    void showLive(const QString &text);
    void endLive();

    /// Whether everything printed has been written; a full disk is noticed here, and told once.
    bool isGood() const { return m_isGood; }

private:
    void write(const QByteArray &line);

    const bool m_isTerminal;
    const bool m_hasLive;
    const bool m_hasColours;
    bool m_isLive = false;
    bool m_isGood = true;
};
