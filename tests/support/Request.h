// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "testing/Request.h"

using TavoTesting::elementsOf;
using TavoTesting::Request;
using TavoTesting::valueAt;
