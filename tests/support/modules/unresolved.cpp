// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/export.h"

/// Defined nowhere: the library can't be loaded by who insists on having every symbol.
extern "C" void *tavo_test_defined_nowhere(const char *name, void *config);

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    return tavo_test_defined_nowhere(name, config);
}
