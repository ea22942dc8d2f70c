// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmendpoint.h"

CMEndpoint::~CMEndpoint() = default;

CMEndpoint::Pointer CMEndpoint::hold(CMEndpoint *node)
{
    if (node != nullptr) {
        node->ref.ref();
    }
    return Pointer(node);
}

void CMEndpoint::release()
{
    if (!ref.deref()) {
        free();
    }
}

void CMEndpoint::free()
{
    delete this;
}
