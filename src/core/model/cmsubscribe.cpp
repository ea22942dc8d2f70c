// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmsubscribe.h"

#include "core/registry/cmsubscriptions.h"

QString CMSubscribe::RowsChangeInserted()
{
    return QStringLiteral("inserted");
}

QString CMSubscribe::RowsChangeRemoved()
{
    return QStringLiteral("removed");
}

QString CMSubscribe::RowsChangeReset()
{
    return QStringLiteral("reset");
}

QString CMSubscribe::RowsChangeClose()
{
    return QStringLiteral("close");
}

int CMSubscribe::raiseRowsChange(const CMPath &path, const QStringList &changes, int first,
                                 int count)
{
    return CMSubscriptions::reportRows(path, changes, first, count);
}

bool CMSubscribe::closeNode(const CMPath &path)
{
    return raiseRowsChange(path, {RowsChangeClose()}) > 0;
}
