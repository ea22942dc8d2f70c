// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fuzz/support/ByteReader.h"

#include <ostream>
#include <sstream>
#include <string>

/// What a fuzzer does with one input. Called in the main thread, with a QCoreApplication there and
/// every log record rendered; a record at FATAL is a finding.
void fuzzOne(ByteReader &input);

/// Ends the process with a finding.
[[noreturn]] void fuzzFinding(const char *file, int line, const std::string &text);

/// A property that holds for every input; what stands behind the comma is a stream expression.
#define FUZZ_CHECK(condition, text)                                                                \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::ostringstream fuzzText;                                                           \
            fuzzText << #condition << ": " << text; /* NOLINT(bugprone-macro-parentheses) */       \
            fuzzFinding(__FILE__, __LINE__, fuzzText.str());                                       \
        }                                                                                          \
    } while (false)
