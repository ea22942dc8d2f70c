// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/records/enumerations.h"
#include "core/records/tavohash.h"
#include "core/records/tavolist.h"

/// A picture: its pixels, or where it is.
class TavoImage : public TavoHash
{
    TAVO_RECORD(TavoImage)

    /// A name in an icon theme, an absolute path, or a file: URI. Only used without pixels. A client may
    /// name any file: check that it is a regular one before reading it.
    TAVO_FIELD(QString, source, setSource)
    /// In pixels.
    TAVO_FIELD(int, width, setWidth)
    /// In pixels.
    TAVO_FIELD(int, height, setHeight)
    /// Red, green, blue and opacity of each pixel, a byte each, row by row from the top. The colours are
    /// not multiplied by the opacity.
    TAVO_FIELD(QByteArray, pixels, setPixels)
};

/// One row of a list, as a user interface shows it.
class TavoRoles : public TavoHash
{
    TAVO_RECORD(TavoRoles)

    /// What the row is.
    TAVO_FIELD(TavoRolesType::Enum, type, setType)
    /// The text to show.
    TAVO_FIELD(TrString, title, setTitle)
    /// The node that the row leads to or activates.
    TAVO_FIELD(CMPath, path, setPath)

    // Only in rows of notifications from other programs.
    TAVO_FIELD(QString, application, setApplication)   ///< the program's name, for people
    TAVO_FIELD(QString, desktopEntry, setDesktopEntry) ///< the name of its .desktop file
    /// The program's icon, or that of an action: a name in an icon theme, a path or a file: URI.
    TAVO_FIELD(QString, icon, setIcon)
    TAVO_FIELD(TavoImage, image, setImage) ///< what the notification is about
    /// The title with emphasis, if there is any: elements b, i and u, without attributes, each closed in
    /// the order of nesting. In its text, & < and > are written as &amp; &lt; and &gt;.
    TAVO_FIELD(QString, markup, setMarkup)
    TAVO_FIELD(int, value, setValue) ///< a progress from 0 to 100, if hasValue()
    /// Returns whether there is a progress.
    bool hasValue() const { return fields().contains(QStringLiteral("value")); }
    TAVO_FIELD_KEY(bool, isDefault, setDefault, "default") ///< the action of the whole notification
    TAVO_FIELD(QString, category, setCategory)             ///< such as "im.received"
    TAVO_FIELD_KEY(bool, isTransient, setTransient, "transient") ///< not worth keeping
};

/// Which roles the rows of a list carry.
class TavoRowsRoles : public TavoHash
{
    TAVO_RECORD(TavoRowsRoles)

    /// The roles, each once.
    TAVO_FIELD(TavoList<TavoRowsRolesType::Enum>, type, setType)
};
