// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/BusUser.h"

#include <QString>

#include <optional>
#include <vector>

/// Where the crowd and its host are. Not changed once the threads run.
struct Setting
{
    QString address;       ///< of the bus
    std::string sounds;    ///< a folder of which clients may play all files
    std::string uploads;   ///< below it, where clients may write
    std::string forbidden; ///< a folder of which clients may play nothing

    // Without these, everybody is this process's user.
    std::optional<BusUser> good;
    std::vector<BusUser> hostile; ///< permitted, like the good one
    std::optional<BusUser> outsider;

    static constexpr const char *alarm = "/alarm.wav"; ///< in the folder of sounds
};
