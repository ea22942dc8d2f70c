// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "client/TavoClientError.h"

/// Whether the same request may succeed later.
inline bool isBusy(const CMError &error)
{
    return error.name() == TavoClientError::limitExceeded() ||
           error.name() == TavoClientError::timedOut();
}

constexpr int askBusyHostAgainMs = 1000;
