// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

/// The display's contract as a plain value, without module, event loop or clock. Times are in
/// ticks.
class DisplayModel
{
public:
    /// Where a notification's path comes from.
    enum class Form {
        Message,   ///< from the module, which makes a node
        Shared,    ///< from the client, the same for all shared notifications
        Reference, ///< from the client, a new one; its id names namedNext()'s node
    };

    /// The path of all shared notifications. Any other path is its notification's number.
    static constexpr int sharedPath = -1;
    static constexpr int none = -2;

    struct Entry
    {
        int number; ///< in the order of opening
        Form form;
        int priority;
        int time;         ///< its timeout; 0: none
        int left;         ///< remaining timeout at the start of its current or next showing
        int names = none; ///< the message whose node this reference names by its id
        int shown = 0;    ///< in total, while its timer was not late

        int path() const { return form == Form::Shared ? sharedPath : number; }
    };

    // Steps.
    int open(Form form, int priority, int time); ///< returns the number
    int cancel(int path);                        ///< returns how many were removed
    void passTime();                             ///< one tick
    void expire();                               ///< the head's timer is delivered

    // The state that clients must see.
    const std::vector<Entry> &queue() const { return m_queue; }
    bool isHeadTimed() const { return !m_queue.empty() && m_queue.front().left > 0; }
    bool isDue() const { return isHeadTimed() && m_elapsed >= m_queue.front().left; }
    bool isOverdue() const { return isHeadTimed() && m_elapsed > m_queue.front().left; }
    int elapsed() const { return m_elapsed; }
    /// The number of open notifications with that path, and so of subscriptions.
    int count(int path) const;
    /// The numbers of all messages so far, and whether a message's node exists.
    int opened() const { return m_opened; }
    const std::vector<int> &messages() const { return m_messages; }
    bool hasNode(int message) const;
    /// The message whose node the next reference names by its id, or none. If an open reference
    /// names a message, this is the same one; otherwise it is the first message with a node.
    /// References name only one message at a time, which keeps the number of states small.
    int namedNext() const;

    /// Equal for two states if and only if no later step can distinguish them.
    std::string key() const;

private:
    void remove(std::size_t index);

    std::vector<Entry> m_queue;
    int m_elapsed = 0; ///< since the head was shown
    std::vector<int> m_messages;
    std::vector<int> m_nodes; ///< the existing nodes of messages, oldest first
    int m_opened = 0;
};
