// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/model/cmabstractworker.h"

/// The root worker, which reaches every node of the process. Used from any thread; never destroyed.
TAVO_API_EXPORT CMAbstractWorker *CMRoot();
