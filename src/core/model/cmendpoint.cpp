// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmendpoint.h"

CMEndpoint::~CMEndpoint() = default;

void CMEndpoint::free()
{
    delete this;
}
