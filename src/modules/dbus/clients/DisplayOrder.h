// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <deque>

/// Tracks where our notifications are in the display's queue, from the changes of the queue's rows.
/// These say where a row was inserted or removed, but not which row it was.
///
/// The queue need not be empty at the start: an unknown row is not ours, and any number of them may
/// follow the known ones.
class DisplayOrder
{
public:
    /// One request to show a notification. A notification that is queued again has another one.
    struct Opening
    {
        quint32 id = 0; ///< of the notification; 0: not ours
        quint32 number = 0;

        bool isOurs() const { return id != 0; }
        bool operator==(const Opening &other) const
        {
            return id == other.id && number == other.number;
        }
        bool operator!=(const Opening &other) const { return !(*this == other); }
    };

    /// A row was inserted. It counts as not ours until nameLast() names it.
    void insert(int index);

    /// Says which opening was inserted last. Does nothing if a row was removed since.
    void nameLast(const Opening &opening);

    /// A row was removed. Returns its opening.
    Opening remove(int index);

    /// The opening that is on display.
    Opening head() const { return m_openings.empty() ? Opening() : m_openings.front(); }

    void clear();

private:
    void trim();

    std::deque<Opening> m_openings; ///< up to the last one that is ours or was inserted last
    int m_last = -1;                ///< index of the one inserted last; -1 after a removal
};
