// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/export.h"

/// A library that is no module: it exports another function than the one the host looks for.
TAVO_MODULE_EXPORT int worker_creator()
{
    return 0;
}
