// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <vector>

/// What clients of the system send: keys, ids, paths, media types, and odd texts. Inputs contain
/// the numbers of these, so after a change the seeds must be written again.
const std::vector<QString> &fuzzWords();

/// What a record's field should hold.
enum class FuzzField {
    Bool,
    Int,
    Double,
    Text,
    Path,
    Translatable,
    Ints,
    Strings,
    Record,
    Records
};

/// The kinds of records, by their numbers in inputs.
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
