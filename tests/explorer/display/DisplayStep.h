// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DisplayModel.h"

#include <cstdint>
#include <string>
#include <vector>

/// The bounds of the exploration.
struct DisplayBounds
{
    int alive = 4;      ///< notifications at once
    int priorities = 3; ///< from 0 on
    int maxTimeout = 2; ///< in ticks
    int forms = 3;      ///< the number of DisplayModel's forms, in its order
};

/// Something that happens to the display.
struct DisplayStep
{
    enum class Kind {
        Open,
        Cancel,
        CancelBare,      ///< with the bare path instead of a record
        Close,           ///< by a client
        CloseThenCancel, ///< the cancel comes before the close is delivered
        CancelThenClose,
        Tick,     ///< time passes, and a timer that is due fires
        LateTick, ///< time passes, and the timer that is due does not fire yet
        Deliver,  ///< the late timer fires
    };

    Kind kind = Kind::Tick;
    DisplayModel::Form form = DisplayModel::Form::Message; ///< of the notification that is opened
    int priority = 0;
    int time = 0;
    int index = 0; ///< in the queue

    std::uint16_t number() const;
    static DisplayStep fromNumber(std::uint16_t number);
    std::string words() const;

    /// The steps that are possible in the model's state.
    static std::vector<DisplayStep> possible(const DisplayModel &model,
                                             const DisplayBounds &bounds);
};
