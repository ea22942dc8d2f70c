// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "HistoryEntry.h"

#include <variant>

// What is written to the history, in the order of the calls.

/// What became of an entry.
struct HistoryChange
{
    qint64 number;
    HistoryEntry::State state;
    QString action;
    qint64 endTime;
    QString user{}; ///< the entry's
};

/// What an open entry has become, for the next start. People read the entry as it came.
struct HistoryReplacement
{
    HistoryEntry entry;
};

/// What was missed between these numbers has been seen.
struct HistorySeen
{
    qint64 upTo;
    qint64 from = 0;
};

/// Entries that were open when the last host ended have ended, but not those with mustSee. What an older
/// host has left of these goes.
struct HistoryLeftEnd
{
    qint64 time;
};

using HistoryStep =
    std::variant<HistoryEntry, HistoryChange, HistoryReplacement, HistorySeen, HistoryLeftEnd>;
