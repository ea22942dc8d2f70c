// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

/// Counts out the ids of notifications: never 0, none that is in use, and after the largest from the
/// smallest on again.
class NotificationIds
{
public:
    explicit NotificationIds(quint32 first = 1)
        : m_next(first)
    {
    }

    /// The predicate says whether an id is in use; there must be one that isn't.
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
