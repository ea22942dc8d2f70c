// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/reference/Reference.h"

#include <map>
#include <string>

/// What a shell is to offer for a value.
enum class ValueOffer { Nothing, Files, NodePaths, MessagePaths, Words };

ValueOffer offerFor(const std::string &valueName);

/// The words to offer, parted by blanks; empty for other offers.
std::string offeredWords(const std::string &valueName);

/// Each option with a value and what its value is called, of the program and all commands: a name
/// means the same wherever it stands.
std::map<std::string, std::string> valuedOptions(const Reference &reference);

// Print paths, a line each. Not waiting long: somebody is typing.
constexpr const char *s_listNodes = "tavo --patience 1 tree 2>/dev/null | cut -f 1";
constexpr const char *s_listMessages = "tavo --patience 1 list 2>/dev/null | cut -f 2";

/// A text between single quotes, as every shell reads it.
std::string shellQuoted(const std::string &text);
