// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"
#include <core/records/attention.h>

/// The notification that the options describe.
Result<TavoAttentionItem, ExitFailure> notifyItem(const Options &options);
