// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

/// One sound notification, as far as its client and its player's device know it.
struct SoundItem
{
    /// What the item's player is doing.
    enum class Player : unsigned char {
        None,    ///< there is no player yet
        Made,    ///< made, but not played yet
        Playing, ///< will report an end
        Paused,  ///< may report an end
        Stopping ///< stop() was called: will report its end
    };

    int id = 0;
    int priority = 0;
    bool valid = true;      ///< false for a type that no player plays
    bool responds = true;   ///< has a response path
    bool started = false;   ///< the started response was sent
    bool sounding = false;  ///< heard, including the time between stop() and the end
    bool overtaken = false; ///< a more urgent item has pre-empted the queue since it was stopped
    Player player = Player::None;

    bool owesEnd() const { return player == Player::Playing || player == Player::Stopping; }
};

/// The expected contents of the module's lists, known from requests and reports without looking
/// into the module.
class SoundLedger
{
public:
    /// Waiting, paused and playing items, in the order of playing.
    const std::vector<SoundItem> &queue() const { return m_queue; }
    /// Items that were cancelled while they had a player.
    const std::vector<SoundItem> &stopping() const { return m_stopping; }

    bool isEmpty() const { return m_queue.empty() && m_stopping.empty(); }
    int size() const { return int(m_queue.size() + m_stopping.size()); }

    void clear();

    /// Inserts by priority, equal ones in their order of arrival. Marks stopping items as overtaken
    /// if the new one becomes the head.
    void enqueue(const SoundItem &item);

    SoundItem *find(int id); ///< null if it is in neither list
    bool isQueued(int id) const;
    bool isHead(int id) const { return !m_queue.empty() && m_queue.front().id == id; }

    void remove(int id);
    void moveToStopping(int id);

private:
    std::vector<SoundItem> m_queue;
    std::vector<SoundItem> m_stopping;
};
