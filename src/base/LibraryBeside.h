// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QString>

/// Loads a library, unless it is loaded, by its path relative to the folder of the one that holds the given address, so
/// that both can be installed anywhere. It is never unloaded. Returns the symbol's address. After a failure, the next call
/// tries again. Called from any thread.
Result<const void *> symbolOfLibraryBeside(const void *address, const QString &file,
                                           const char *symbol);
