// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

/// One sound notification as its requester and its player's device know it.
struct SoundItem
{
    /// What the item's player is doing.
    enum class Player : unsigned char {
        None,    ///< there is none yet
        Made,    ///< and not played yet
        Playing, ///< will report its end
        Paused,  ///< may report an end
        Stopping ///< stop() was called: will report its end
    };

    int id = 0;
    int priority = 0;
    bool valid = true;      ///< false: of a type that nothing plays
    bool responds = true;   ///< has a response path
    bool started = false;   ///< the started response was sent
    bool sounding = false;  ///< heard, the time between stop() and the end included
    bool overtaken = false; ///< a more urgent item has pre-empted the queue since it was stopped
    Player player = Player::None;

    bool owesEnd() const { return player == Player::Playing || player == Player::Stopping; }
};

/// What must be in the module's lists: kept by what was asked for and what has been reported, without
/// a look into the module.
class SoundLedger
{
public:
    /// Waiting, paused and playing, in the order in which they are due.
    const std::vector<SoundItem> &queue() const { return m_queue; }
    /// Cancelled while they had a player.
    const std::vector<SoundItem> &stopping() const { return m_stopping; }

    bool isEmpty() const { return m_queue.empty() && m_stopping.empty(); }
    int size() const { return int(m_queue.size() + m_stopping.size()); }

    void clear();

    /// More urgent ones stand ahead, equal ones in the order of their arrival. What was stopped
    /// before a pre-emption is overtaken by it.
    void enqueue(const SoundItem &item);

    SoundItem *find(int id); ///< null when it is in neither list
    bool isQueued(int id) const;
    bool isHead(int id) const { return !m_queue.empty() && m_queue.front().id == id; }

    void remove(int id);
    void moveToStopping(int id);

private:
    std::vector<SoundItem> m_queue;
    std::vector<SoundItem> m_stopping;
};
