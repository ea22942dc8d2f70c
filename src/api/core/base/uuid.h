// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QString>

/// A new random identifier (RFC 4122, version 4) of 36 characters. It is unique, but not secret: a
/// client that has seen many can guess the next. Called from any thread.
TAVO_API_EXPORT QString tavoGenerateUuid();
