// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/changenotifier.h"
#include "core/registry/cmpathtable.h"

#include <vector>

/// Notifiers by path; those of one path keep the order in which they were added. Does not own them.
///
/// The notifiers of a path form a ring, linked through one of their members. The table holds the
/// newest, whose next is the oldest: so adding a notifier and finding the oldest cost the same for
/// any number, and allocate nothing. With a list for each path, an open notification would take
/// 1576 bytes, and the goal is 1536 (benchmark tavo_memory_use).
class CMNotifierTable
{
public:
    void append(ChangeNotifier *notifier)
    {
        ChangeNotifier *newest = m_newest.find(notifier->path());
        if (newest == nullptr) {
            notifier->m_next = notifier;
            m_newest.insert(notifier);
        } else {
            notifier->m_next = newest->m_next;
            newest->m_next = notifier;
            m_newest.replace(newest, notifier);
        }
    }

    /// Calls the function with each of the path's notifiers, oldest first, until it returns true.
    /// Removes that notifier and returns it; returns null if there is none.
    template <typename Accept>
    ChangeNotifier *takeFirst(const CMPath &path, Accept accept)
    {
        ChangeNotifier *newest = m_newest.find(path);
        for (ChangeNotifier *previous = newest; previous != nullptr;) {
            ChangeNotifier *notifier = previous->m_next;
            if (accept(notifier)) {
                takeAfter(previous, newest);
                return notifier;
            }
            previous = notifier == newest ? nullptr : notifier;
        }
        return nullptr;
    }

    /// Calls the function with each of the path's notifiers, oldest first.
    template <typename Function>
    void forEach(const CMPath &path, Function function)
    {
        takeFirst(path, [&function](ChangeNotifier *notifier) {
            function(notifier);
            return false;
        });
    }

    /// Empties the table and returns the notifiers.
    std::vector<ChangeNotifier *> takeAll()
    {
        std::vector<ChangeNotifier *> all;
        for (ChangeNotifier *newest : m_newest.takeAll()) {
            for (ChangeNotifier *notifier = newest->m_next; notifier != newest;
                 notifier = notifier->m_next) {
                all.push_back(notifier);
            }
            all.push_back(newest);
        }
        return all;
    }

private:
    void takeAfter(ChangeNotifier *previous, ChangeNotifier *newest)
    {
        ChangeNotifier *taken = previous->m_next;
        previous->m_next = taken->m_next;
        if (taken == previous) {
            m_newest.remove(taken);
        } else if (taken == newest) {
            m_newest.replace(taken, previous);
        }
    }

    CMPathTable<ChangeNotifier, &ChangeNotifier::m_nextInTable> m_newest;
};
