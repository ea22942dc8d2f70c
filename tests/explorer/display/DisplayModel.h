// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

/// What the display's contract says should come of each step, as a value: no module, no event loop,
/// no clock of its own. Times are in ticks.
class DisplayModel
{
public:
    /// What names a notification's path.
    enum class Form {
        Message,   ///< the module, with a node of its own
        Shared,    ///< its requester, the same for all of the form
        Reference, ///< its requester, for this one alone; its id is that of namedNext()'s node
    };

    /// The path of every shared notification; other paths have their notification's number.
    static constexpr int sharedPath = -1;
    static constexpr int none = -2;

    struct Entry
    {
        int number; ///< in the order of opening
        Form form;
        int priority;
        int time;         ///< asked for; 0 is without a limit
        int left;         ///< of it, when it was or will be shown the next time
        int names = none; ///< the number of the message whose node's identifier is its id
        int shown = 0;    ///< with its timer on time

        int path() const { return form == Form::Shared ? sharedPath : number; }
    };

    // Steps.
    int open(Form form, int priority, int time); ///< gives the number
    int cancel(int path);                        ///< gives how many were removed
    void passTime();                             ///< one tick
    void expire();                               ///< the head's timer is delivered

    // What is to be seen.
    const std::vector<Entry> &queue() const { return m_queue; }
    bool isHeadTimed() const { return !m_queue.empty() && m_queue.front().left > 0; }
    bool isDue() const { return isHeadTimed() && m_elapsed >= m_queue.front().left; }
    bool isOverdue() const { return isHeadTimed() && m_elapsed > m_queue.front().left; }
    int elapsed() const { return m_elapsed; }
    /// How many notifications with that path are open, and so how many subscriptions there are.
    int count(int path) const;
    /// The numbers of all messages so far, and whether a message's node is there.
    int opened() const { return m_opened; }
    const std::vector<int> &messages() const { return m_messages; }
    bool hasNode(int message) const;
    /// The message whose node the next reference is named like: the first that is open, but one at a
    /// time, to keep the states few; or none.
    int namedNext() const;

    /// Equal for two states exactly when nothing that may come can tell them apart.
    std::string key() const;

private:
    void remove(std::size_t index);

    std::vector<Entry> m_queue;
    int m_elapsed = 0; ///< since the head was shown
    std::vector<int> m_messages;
    std::vector<int> m_nodes; ///< those of messages that are there, oldest first
    int m_opened = 0;
};
