// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ActionLog.h"
#include "Ledger.h"

#include <QString>
#include <QStringList>

#include <atomic>

/// Faults that the load has on demand, to show that the watch finds their like.
struct Planted
{
    bool memory = false;
    bool descriptors = false;
    bool threads = false;
    bool answer = false;
    bool sound = false;
};

/// What all parts of the load share. Outlives them; any thread.
struct Situation
{
    QString sounds; ///< a folder
    QString http;   ///< where the same sounds are served; may be empty
    Planted planted;
    ActionLog actions;
    Ledger ledger{&actions};
    std::atomic<bool> lull{false}; ///< nothing new for a moment, so that the queue runs dry
    std::atomic<int> lastId{0};
};
