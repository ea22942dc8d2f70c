// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

/// How a value is written in an input: a byte with its kind, then its content. Seeds contain these
/// numbers, so new ones go before Count.
enum class FuzzTag : std::uint8_t {
    None,
    Bool,   // byte
    Small,  // signed byte
    Int,    // 4 bytes
    UInt,   // 4
    Long,   // 8
    ULong,  // 8
    Double, // 8
    OddDouble,
    Text, // a FuzzText
    Bytes,
    List,       // count, values
    StringList, // count, strings
    Hash,       // count, a string and a value for each
    Map,
    Record,     // kind, then a FuzzFill for each field
    Nested,     // kind, binary logarithm of the depth, a key unless they are lists, the inner value
    Path,       // string; of type CMPath
    Translated, // string, count of arguments; of the translatable type
    Foreign,    // a Qt type that no record has
    Copies,     // binary logarithm of their number, then a value of a kind above List
    Known,      // something that the fuzzer has learned, such as the path of an open notification
    Count
};

enum class FuzzText : std::uint8_t {
    Word,  // number
    Short, // count, UTF-8
    Wide,  // count, UTF-16, even unpaired surrogates
    Huge,  // a UTF-16 unit, then the binary logarithm of the length
    Count
};

/// What happens to a record's field.
enum class FuzzFill : std::uint8_t { Left, Suitable, Any, Count };
