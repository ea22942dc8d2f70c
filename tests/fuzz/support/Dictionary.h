// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <vector>

/// What the system's requesters say: keys, ids, paths, media types, and texts that are odd on
/// purpose. An input names one by its number: with new ones the seeds are to be written anew.
const std::vector<QString> &fuzzWords();

/// What a field of a record should hold.
enum class FuzzField { Bool, Int, Double, Text, Path, Translatable, Ints, Texts, Record, Records };

/// The kinds of record; the order is that of the inputs' numbers.
enum class FuzzRecord {
    Value,
    PlayerItem,
    DisplayItem,
    PlayerResponse,
    RevokeMessage,
    ModuleRegister,
    ResourceRequest,
    ResourceHolders,
    PowerManagerState,
    DuckingRequest,
    AudioDevice,
    MainAudioState,
    Roles,
    RowsRoles,
    Translation,
    PlayerConfiguration,
    PowerManagerConfiguration,
    Count
};

struct FuzzFieldOf
{
    const char *key;
    FuzzField type;
    FuzzRecord record = FuzzRecord::Value; ///< for Record and Records
};

const std::vector<FuzzFieldOf> &fuzzFields(FuzzRecord record);
