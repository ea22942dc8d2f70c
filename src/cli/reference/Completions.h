// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/reference/Reference.h"

#include <map>
#include <string>

/// What a shell offers for a value.
enum class ValueOffer { Nothing, Files, NodePaths, MessagePaths, Words };

ValueOffer offerFor(const std::string &valueName);

/// The words to offer, separated by blanks; empty for other offers.
std::string offeredWords(const std::string &valueName);

/// The options that take a value, of the program and all commands, with the names of their values. An
/// option means the same for every command.
std::map<std::string, std::string> valuedOptions(const Reference &reference);

// Print paths, one a line. They don't wait long: somebody is typing.
constexpr const char *s_listNodes = "tavo --reply-timeout 1 tree 2>/dev/null | cut -f 1";
constexpr const char *s_listMessages = "tavo --reply-timeout 1 list 2>/dev/null | cut -f 2";

/// The text in single quotes, for every shell.
std::string shellQuoted(const std::string &text);
