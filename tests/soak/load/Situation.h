// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ActionLog.h"
#include "Ledger.h"

#include <QString>
#include <QStringList>

#include <atomic>

/// Faults that the load makes on demand, to show that the soak finds such faults.
struct Planted
{
    bool memory = false;
    bool descriptors = false;
    bool threads = false;
    bool answer = false;
    bool sound = false;
};

/// Shared by all parts of the load, which it outlives. Used from any thread.
struct Situation
{
    QString sounds; ///< a folder
    QString http;   ///< a server of the same sounds, or empty
    Planted planted;
    ActionLog actions;
    Ledger ledger{&actions};
    std::atomic<bool> lull{false}; ///< nothing new for a moment, so that the queue runs empty
    std::atomic<int> lastId{0};
};
