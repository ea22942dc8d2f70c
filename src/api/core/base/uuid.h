// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QString>

/// A new random identifier (RFC 4122, version 4) of 36 characters. It is unique, and nobody can
/// guess it. Called from any thread.
TAVO_API_EXPORT QString tavoGenerateUuid();
