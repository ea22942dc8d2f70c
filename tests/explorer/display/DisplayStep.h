// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DisplayModel.h"

#include <cstdint>
#include <string>
#include <vector>

/// How much may happen at once.
struct DisplayBounds
{
    int alive = 4;      ///< notifications at once
    int priorities = 3; ///< from 0 on
    int longest = 2;    ///< time limit, in ticks
    int forms = 3;      ///< of those that DisplayModel knows, in its order
};

/// Something that happens to the display.
struct DisplayStep
{
    enum class Kind {
        Open,
        Cancel,
        CancelBare,      ///< with the path itself instead of a record that holds it
        Close,           ///< by a client
        CloseThenCancel, ///< both on their way at once
        CancelThenClose,
        Tick,     ///< time passes, and the timer is on time
        LateTick, ///< time passes, and the timer has yet to be delivered
        Deliver,  ///< what was late
    };

    Kind kind = Kind::Tick;
    DisplayModel::Form form = DisplayModel::Form::Message; ///< of what is opened
    int priority = 0;
    int time = 0;
    int index = 0; ///< of one in the queue

    std::uint16_t number() const;
    static DisplayStep fromNumber(std::uint16_t number);
    std::string words() const;

    /// What may happen where the model stands.
    static std::vector<DisplayStep> possible(const DisplayModel &model,
                                             const DisplayBounds &bounds);
};
