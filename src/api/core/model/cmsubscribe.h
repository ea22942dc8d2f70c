// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/cmpath.h"

#include <QStringList>

/// The names of rows changes, and functions that raise them from outside a node.
class TAVO_API_EXPORT CMSubscribe
{
public:
    /// Rows have been inserted: count of them, so that the first is at index first.
    static QString RowsChangeInserted();
    /// Rows have been removed: count of them, from index first on.
    static QString RowsChangeRemoved();
    static QString RowsChangeReset(); ///< any row may have changed

    /// A client closes the node: a user interface removes it.
    static QString RowsChangeClose();

    /// Reports a rows change to the subscribers of the path, which need not have a node. Returns
    /// how many subscribers there are. Called from any thread.
    static int raiseRowsChange(const CMPath &path, const QStringList &changes, int first = -1,
                               int count = 0);

    /// Closes the node at the path, as a client does. Returns whether there is a subscriber. Called
    /// from any thread.
    static bool closeNode(const CMPath &path);
};
