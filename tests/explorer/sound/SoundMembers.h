// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

class CMWorker;

/// The state of a worker's sound controller, read from its members.
struct SoundMembers
{
    struct Item
    {
        int id;
        int priority;
        bool hasPlayer;
    };

    static constexpr int nobody = -1;
    static constexpr int stranger = -2;

    bool audioDucked = false;
    bool audioResource = false;
    bool resourceRequestPending = false;
    bool activeRequest = false;
    int activeId = nobody; ///< of the active item
    bool timerRuns = false;
    int timerRemains = 0; ///< milliseconds
    bool continuing = false;
    std::vector<Item> queue;
    std::vector<Item> stopping;

    static SoundMembers of(const CMWorker &worker);

    /// The active item's position in the queue followed by the stopping items; nobody if none is
    /// active, stranger if it is in neither list.
    int positionOfActive() const;
};
