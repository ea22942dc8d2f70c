// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/definition/Definition.h"

#include <map>
#include <string>

/// What a shell offers for a value.
enum class ValueOffer { Nothing, Files, NodePaths, MessagePaths, Words };

ValueOffer offerFor(const std::string &valueName);

/// The words to offer, separated by blanks; empty for other offers.
std::string offeredWords(const std::string &valueName);

/// Maps the options that take a value, of the program and of all commands, to the names of their
/// values. An option means the same in every command.
std::map<std::string, std::string> valuedOptions(const Definition &definition);

// Print one path on each line. The timeout is short: somebody is typing.
constexpr const char *s_listNodes = "tavo --reply-timeout 1 tree 2>/dev/null | cut -f 1";
constexpr const char *s_listMessages =
    "tavo --reply-timeout 1 rows --count 100 /notifications/display/queue 2>/dev/null";

/// The text in single quotes, for every shell.
std::string shellQuoted(const std::string &text);
