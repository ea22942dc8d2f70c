// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "testing/ScriptedService.h"

using TavoTesting::ScriptedService;
