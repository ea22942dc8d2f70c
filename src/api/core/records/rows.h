// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/records/enumerations.h"
#include "core/records/tavohash.h"
#include "core/records/tavolist.h"

/// One row of a list, as a user interface shows it.
class TavoRoles : public TavoHash
{
    TAVO_RECORD(TavoRoles)

    TAVO_FIELD(TavoRolesType::Enum, type, setType)
    TAVO_FIELD(TrString, title, setTitle)
    /// The node that the row leads to or activates.
    TAVO_FIELD(CMPath, path, setPath)

    // Only in rows of notifications from other programs.
    TAVO_FIELD(QString, application, setApplication)   ///< the program's name, for people
    TAVO_FIELD(QString, desktopEntry, setDesktopEntry) ///< the name of its .desktop file
    TAVO_FIELD(QString, icon, setIcon)                 ///< a name in an icon theme, or a URI
    TAVO_FIELD(QString, category, setCategory)         ///< such as "im.received"
    TAVO_FIELD_KEY(bool, isTransient, setTransient, "transient") ///< not worth keeping
};

/// Which roles the rows of a list carry.
class TavoRowsRoles : public TavoHash
{
    TAVO_RECORD(TavoRowsRoles)

    TAVO_FIELD(TavoList<TavoRowsRolesType::Enum>, type, setType)
};
