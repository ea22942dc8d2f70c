// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmuinode.h"

void CMUINode::setTitle(const TrString &title)
{
    const std::lock_guard lock(guard());
    m_title = title;
}

TrString CMUINode::title() const
{
    const std::lock_guard lock(guard());
    return m_title;
}
