// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/nodes/cmnodes.h"

#include "core/model/cmendpoint.h"

CMNodes::~CMNodes()
{
    while (m_first != nullptr) {
        m_first->dispose();
    }
}

void CMNodes::forEach(const std::function<void(const CMEndpoint *)> &function) const
{
    for (const CMEndpoint *node = m_first; node != nullptr; node = node->m_next) {
        function(node);
    }
}

void CMNodes::add(CMEndpoint *node)
{
    node->ref.ref();
    node->m_next = m_first;
    if (m_first != nullptr) {
        m_first->m_previous = node;
    }
    m_first = node;
    ++m_size;
}

void CMNodes::remove(CMEndpoint *node)
{
    (node->m_previous != nullptr ? node->m_previous->m_next : m_first) = node->m_next;
    if (node->m_next != nullptr) {
        node->m_next->m_previous = node->m_previous;
    }
    --m_size;
    node->release();
}
