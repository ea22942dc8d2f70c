// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <deque>

/// Follows where notifications of ours stand in the display's queue, by the changes of its rows,
/// which say where something came or went, but not what.
///
/// The queue may hold anything when the following begins: whatever isn't known is another's, and any
/// number of those may stand behind what is known.
class DisplayOrder
{
public:
    /// One showing of a notification. One that is queued anew is opened anew.
    struct Opening
    {
        quint32 id = 0; ///< the notification's; 0: another's
        quint32 number = 0;

        bool isOurs() const { return id != 0; }
        bool operator==(const Opening &other) const
        {
            return id == other.id && number == other.number;
        }
        bool operator!=(const Opening &other) const { return !(*this == other); }
    };

    /// Something came to stand at the index; until it is named, it is another's.
    void insert(int index);

    /// What came last is this. Nothing may have gone since.
    void nameLast(const Opening &opening);

    /// Takes out what stands at the index and says what it was.
    Opening remove(int index);

    /// What is on display.
    Opening head() const { return m_openings.empty() ? Opening() : m_openings.front(); }

    void clear();

private:
    void trim();

    std::deque<Opening> m_openings; ///< the last one is ours, or came last
    int m_last = -1;                ///< where what came last stands; -1: it isn't there any more
};
