// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/export.h"

/// Not defined anywhere, so the library can't be loaded with all its symbols resolved.
extern "C" void *tavo_test_defined_nowhere(const char *name, void *config);

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    return tavo_test_defined_nowhere(name, config);
}
