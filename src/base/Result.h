// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <variant>

/// Why something failed, in words for people.
struct Failure
{
    QString reason;
};

/// A value, or the reason why there is none. For failures that a caller expects. The error is of
/// another type where the caller needs more than words.
template <typename Value, typename Error = Failure>
using Result = std::variant<Value, Error>;
