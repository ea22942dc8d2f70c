// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Quotas.h"
#include <core/tavo.h>

#include <map>
#include <memory>
#include <utility>

/// How many messages of each user refer to a node, by its path. The display closes all messages with one path
/// together, and each of them follows the node's changes, so thousands with the same path would keep it busy.
///
/// Owned by Clients, used in the worker's thread.
class PathPlaces
{
    using Counts = std::map<std::pair<Quotas::UserId, QString>, int>;

public:
    static constexpr int maxPerPath = 16;

    struct Leave
    {
        void operator()(PathPlaces *places) const;
        Counts::iterator count;
    };

    /// A message that refers to a node, until it is destroyed. Must not outlive the places.
    using Place = std::unique_ptr<PathPlaces, Leave>;

    /// An empty path takes no place. Throws BusError::limitExceeded() when the user has too many.
    Place take(Quotas::UserId user, const CMPath &path);

private:
    Counts m_counts;
};
