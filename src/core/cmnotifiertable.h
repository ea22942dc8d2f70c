// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/cmpathtable.h"
#include "core/model/changenotifier.h"

#include <vector>

/// Notifiers by path; those of one path keep the order in which they were added. Does not own them.
///
/// The notifiers of a path form a ring through a member of their own, and the table holds the
/// newest, whose next is the oldest. So a notifier is added, and the oldest found, at the same cost
/// among any number, and without memory: with a list for each path an open notification takes 1576
/// bytes, where the goal is 1536 (benchmark tavo_memory_use).
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

    /// Shows the path's notifiers to the function, oldest first, until it returns true. Takes that
    /// one out and returns it; null if there is none.
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
