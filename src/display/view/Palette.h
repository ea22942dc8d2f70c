// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QColor>
#include <QMetaType>
#include <QObject>
#include <QStringList>

/// The colours of a message. On its background, texts have a contrast of at least 4.5 and lines that
/// matter one of at least 3, those of "high-contrast" at least 7 and 4.5.
struct Palette
{
    Q_GADGET
    Q_PROPERTY(QColor background MEMBER background CONSTANT)
    Q_PROPERTY(QColor text MEMBER text CONSTANT)
    Q_PROPERTY(QColor faintText MEMBER faintText CONSTANT)
    Q_PROPERTY(QColor accent MEMBER accent CONSTANT)
    Q_PROPERTY(QColor border MEMBER border CONSTANT)
    Q_PROPERTY(QColor button MEMBER button CONSTANT)
    Q_PROPERTY(QColor pressedButton MEMBER pressedButton CONSTANT)
    Q_PROPERTY(QColor focus MEMBER focus CONSTANT)
    Q_PROPERTY(QColor backdrop MEMBER backdrop CONSTANT)

public:
    QColor background;
    QColor text;
    QColor faintText;     ///< of what is less important
    QColor accent;        ///< of the priority
    QColor border;        ///< of buttons and of the message
    QColor button;        ///< behind the text of a button
    QColor pressedButton; ///< the same while it is pressed
    QColor focus;         ///< the frame of the button that has the keyboard
    QColor backdrop;      ///< around the message in the mode Fullscreen

    static QStringList names();

    /// Of a priority: those below Low look like it, those above Urgent like that.
    static Palette find(const QString &name, int priority);
};

Q_DECLARE_METATYPE(Palette)
