// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Quotas.h"
#include <core/tavo.h>

#include <map>
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

    /// A message that refers to a node, until it is destroyed. Must not outlive the places.
    class Place
    {
    public:
        Place() = default;
        Place(Place &&other) noexcept
            : m_places(std::exchange(other.m_places, nullptr))
            , m_count(other.m_count)
        {
        }
        Place &operator=(Place other) noexcept
        {
            std::swap(m_places, other.m_places);
            std::swap(m_count, other.m_count);
            return *this;
        }
        ~Place();

    private:
        friend class PathPlaces;
        Place(PathPlaces *places, Counts::iterator count)
            : m_places(places)
            , m_count(count)
        {
        }

        PathPlaces *m_places = nullptr;
        Counts::iterator m_count;
    };

    /// An empty path takes no place. Throws BusError::limitExceeded() when the user has too many.
    Place take(Quotas::UserId user, const CMPath &path);

private:
    Counts m_counts;
};
