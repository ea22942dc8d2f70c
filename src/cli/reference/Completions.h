// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/reference/Reference.h"

#include <string>

/// What a shell is to offer for a value.
enum class ValueOffer { Nothing, Files, NodePaths, Words };

ValueOffer offerFor(const std::string &valueName);

/// The words to offer, parted by blanks; empty for other offers.
std::string offeredWords(const std::string &valueName);

/// Prints the paths of the model's nodes, a line each. Not waiting long: somebody is typing.
constexpr const char *s_listPaths = "tavo --patience 1 tree 2>/dev/null | cut -f 1";

/// A text between single quotes, as every shell reads it.
std::string shellQuoted(const std::string &text);
