// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#ifdef TAVO_API_BUILD
#define TAVO_API_EXPORT Q_DECL_EXPORT
#else
#define TAVO_API_EXPORT Q_DECL_IMPORT
#endif

/// Marks a module's entry point, the one symbol that a module shows:
///     TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config);
/// The host calls it once, in the thread that is to be the worker's, with the instance name and a
/// pointer to a QVariantHash; it returns the new CMWorker, which belongs to the host.
#define TAVO_MODULE_EXPORT extern "C" Q_DECL_EXPORT
