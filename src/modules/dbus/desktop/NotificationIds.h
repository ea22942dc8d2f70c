// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

/// Gives out ids of notifications in their order, and starts again after the largest. Never gives out
/// 0 or an id that is in use.
class NotificationIds
{
public:
    explicit NotificationIds(quint32 first = 1)
        : m_next(first)
    {
    }

    /// The predicate says whether an id is in use. At least one must be free.
    template <typename IsUsed>
    quint32 take(IsUsed isUsed)
    {
        while (m_next == 0 || isUsed(m_next)) {
            ++m_next;
        }
        return m_next++;
    }

private:
    quint32 m_next;
};
