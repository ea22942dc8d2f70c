// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/export.h"

/// A library that is not a module: it does not export the entry point.
TAVO_MODULE_EXPORT int worker_creator()
{
    return 0;
}
