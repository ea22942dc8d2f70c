// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

/// How an input spells a value: a byte that says what follows. Numbers, not places in a table of
/// functions: seeds depend on them, so new ones go before Count.
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
    List,     // count, values
    TextList, // count, texts
    Hash,     // count, a text and a value each
    Map,
    Record,     // kind, then a FuzzFill for each field
    Nested,     // kind, exponent of two of the depth, a key unless it is lists, the value inside
    Path,       // text; the type itself, not its text
    Translated, // text, count of arguments; the type itself
    Foreign,    // a type of Qt's that no record has
    Copies,     // exponent of two of how many, then a value before List
    Known,      // what the fuzzer has learned from the system, such as an open notification's path
    Count
};

enum class FuzzText : std::uint8_t {
    Word,  // number
    Short, // count, UTF-8
    Wide,  // count, UTF-16: anything, halves of surrogates too
    Huge,  // a UTF-16 unit, then the exponent of two of how many
    Count
};

/// What becomes of a record's field.
enum class FuzzFill : std::uint8_t { Left, Suitable, Any, Count };
