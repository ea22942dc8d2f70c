// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/tavo/enumerations.h"
#include "core/tavo/tavohash.h"
#include "core/tavo/tavolist.h"

/// One row of a list, as a user interface shows it.
class TavoRoles : public TavoHash
{
    TAVO_RECORD(TavoRoles)

    TAVO_FIELD(TavoRolesType::Enum, type, setType)
    TAVO_FIELD(TrString, title, setTitle)
};

/// Which roles the rows of a list carry.
class TavoRowsRoles : public TavoHash
{
    TAVO_RECORD(TavoRowsRoles)

    TAVO_FIELD(TavoList<TavoRowsRolesType::Enum>, type, setType)
};
