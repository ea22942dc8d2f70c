// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#ifdef TAVO_CLIENT_BUILD
#define TAVO_CLIENT_EXPORT Q_DECL_EXPORT
#else
#define TAVO_CLIENT_EXPORT Q_DECL_IMPORT
#endif
