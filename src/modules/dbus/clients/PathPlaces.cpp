// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "PathPlaces.h"

#include "Refusals.h"

void PathPlaces::Leave::operator()(PathPlaces *places) const
{
    if (--count->second == 0) {
        places->m_counts.erase(count);
    }
}

PathPlaces::Place PathPlaces::take(Quotas::UserId user, const CMPath &path)
{
    if (path.isEmpty()) {
        return {};
    }
    const auto count = m_counts.try_emplace({user, path.toString()}, 0).first;
    if (count->second == maxPerPath) {
        throw Refusals::userHoldsTooMuch(maxPerPath, "messages that refer to the same node");
    }
    ++count->second;
    return {this, Leave{count}};
}
