// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/cmpath.h"

#include <QStringList>

/// Rows changes by name, and raising them from outside the node.
class TAVO_API_EXPORT CMSubscribe
{
public:
    static QString RowsChangeInserted();
    static QString RowsChangeRemoved();
    static QString RowsChangeReset(); ///< any row may have changed

    /// A client closes the node: whoever shows it takes it away.
    static QString RowsChangeClose();

    /// Reports a rows change at the path to its subscribers, whether or not a node is there.
    /// Returns how many will be told. Any thread.
    static int raiseRowsChange(const CMPath &path, const QStringList &changes, int first = -1,
                               int count = 0);

    /// Closes the node at the path, as a client does. Returns whether anybody listens. Any thread.
    static bool closeNode(const CMPath &path);
};
