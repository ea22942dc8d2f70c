// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmcomputednode.h"

#include "core/registry/cmsubscriptions.h"

QString CMComputedNode::kind() const
{
    return QStringLiteral("value");
}

void CMComputedNode::getData(const CMGetDataRequest &request)
{
    std::unique_lock lock(guard());
    const TavoValue value = makeValue();
    lock.unlock();
    request.reply().setValue(value.__variant());
}

void CMComputedNode::report() const
{
    CMSubscriptions::reportValue(path(), [this] { return makeValue().__variant(); });
}
