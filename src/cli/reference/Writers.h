// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/definition/Definition.h"

#include <optional>
#include <string>

// Texts that are generated from the definition. Each has all commands and options.

/// The help of the program, or of a command, wrapped at 80 characters.
std::string helpText(const Definition &definition);
std::string helpText(const Definition &definition, const CommandDefinition &command);

/// The page tavo.1, for man.
std::string manPage(const Definition &definition);

/// The completions of the shells.
std::string bashCompletion(const Definition &definition);
std::string zshCompletion(const Definition &definition);
std::string fishCompletion(const Definition &definition);

/// The man page or completion named "man", "bash", "zsh" or "fish".
std::optional<std::string> writeReference(const Definition &definition, const std::string &kind);
