// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/reference/Reference.h"

#include <optional>
#include <string>

// Texts that are generated from the reference. Each has all commands and options.

/// The help of the program, or of a command, wrapped at 80 characters.
std::string helpText(const Reference &reference);
std::string helpText(const Reference &reference, const CommandReference &command);

/// The page tavo.1, for man.
std::string manPage(const Reference &reference);

/// The completions of the shells.
std::string bashCompletion(const Reference &reference);
std::string zshCompletion(const Reference &reference);
std::string fishCompletion(const Reference &reference);

/// The man page or completion named "man", "bash", "zsh" or "fish".
std::optional<std::string> writeReference(const Reference &reference, const std::string &kind);
