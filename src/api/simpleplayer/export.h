// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#ifdef TAVO_SIMPLEPLAYER_BUILD
#define TAVO_SIMPLEPLAYER_EXPORT Q_DECL_EXPORT
#else
#define TAVO_SIMPLEPLAYER_EXPORT Q_DECL_IMPORT
#endif
