// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fuzz/support/ByteReader.h"

#include <ostream>
#include <sstream>
#include <string>

/// Runs one input. Called in the main thread, with a QCoreApplication. Every log record is
/// rendered, and a record at FATAL is a finding.
void fuzzOne(ByteReader &input);

/// Ends the process with a finding.
[[noreturn]] void fuzzFinding(const char *file, int line, const std::string &text);

/// Checks something that must hold for every input. The second argument is a stream expression.
#define FUZZ_CHECK(condition, text)                                                                \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::ostringstream fuzzText;                                                           \
            fuzzText << #condition << ": " << text; /* NOLINT(bugprone-macro-parentheses) */       \
            fuzzFinding(__FILE__, __LINE__, fuzzText.str());                                       \
        }                                                                                          \
    } while (false)
