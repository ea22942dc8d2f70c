// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

class CMWorker;

/// What the sound controller of a worker holds: read from its members.
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
    int activeId = nobody; ///< of the item that is active
    bool timerRuns = false;
    int timerRemains = 0; ///< milliseconds
    bool continuing = false;
    std::vector<Item> queue;
    std::vector<Item> stopping;

    static SoundMembers of(const CMWorker &worker);

    /// The position in the queue, or behind it that in the stopping items; for ids that are in neither
    /// nobody or stranger.
    int positionOfActive() const;
};
