// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmreconfigurable.h"

CMReconfigurable::~CMReconfigurable() = default;
