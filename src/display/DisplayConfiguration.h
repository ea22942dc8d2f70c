// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <optional>

/// How the display looks and where. Documented in docs/display.md.
struct DisplayConfiguration
{
    enum class Mode { Corner, Banner, Fullscreen };
    enum class Renderer { Software, OpenGl };
    enum class Mark {
        DoNotDisturb, ///< shown while people do not want to be disturbed
        Missed,       ///< and while there is something that nobody has seen
        Never
    };

    // Read once, at the start:
    QString bus = QStringLiteral("session");
    Renderer renderer = Renderer::Software;

    Mode mode = Mode::Corner;
    bool isAtTop = true;
    bool isAtEnd =
        true;       ///< of lines of text: at the right, or at the left if the layout is mirrored
    QString screen; ///< its name; empty for the primary one
    int margin = 16;
    int width = 420;
    int textSize = 16;                      ///< in pixels before scaling
    QString theme = QStringLiteral("dark"); ///< the name of a palette, or the path of a QML file
    QString iconTheme = QStringLiteral("hicolor");
    QString language; ///< such as "de_AT"; empty for the system's
    QString focusKey; ///< gives the message the keyboard on X11; empty for none
    bool reducedMotion = false;
    Mark mark = Mark::DoNotDisturb;

    /// Whether a change to the other configuration takes effect only after a restart.
    bool needsRestart(const DisplayConfiguration &other) const
    {
        return bus != other.bus || renderer != other.renderer;
    }

    /// Throws a std::runtime_error that names the file, the key and the reason.
    static DisplayConfiguration fromFile(const QString &file);

    /// The same for JSON that has been read from the file. Does not open the file.
    static DisplayConfiguration fromJson(const QByteArray &json, const QString &file);

    static std::optional<Mode> modeFromName(const QString &name);
    static QString modeNames();
    QString modeName() const;
};
