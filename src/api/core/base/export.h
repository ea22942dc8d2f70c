// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#ifdef TAVO_API_BUILD
#define TAVO_API_EXPORT Q_DECL_EXPORT
#else
#define TAVO_API_EXPORT Q_DECL_IMPORT
#endif

/// Marks a module's entry point, the only symbol that a module exports:
///     TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config);
/// The host calls it once, in the worker's thread, with the instance name and a pointer to a
/// QVariantHash. It returns the new CMWorker, which the host owns.
#define TAVO_MODULE_EXPORT extern "C" Q_DECL_EXPORT
