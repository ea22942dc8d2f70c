// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayOrder.h"

void DisplayOrder::insert(int index)
{
    const auto position = std::size_t(qMax(0, index));
    trim();
    if (position > m_openings.size()) {
        m_openings.resize(position);
    }
    m_openings.insert(m_openings.begin() + qptrdiff(position), Opening());
    m_last = int(position);
}

void DisplayOrder::nameLast(const Opening &opening)
{
    if (m_last >= 0) {
        m_openings[std::size_t(m_last)] = opening;
    }
}

DisplayOrder::Opening DisplayOrder::remove(int index)
{
    m_last = -1;
    if (index < 0 || std::size_t(index) >= m_openings.size()) {
        return {};
    }
    const auto position = m_openings.begin() + index;
    const Opening removed = *position;
    m_openings.erase(position);
    trim();
    return removed;
}

void DisplayOrder::trim()
{
    while (!m_openings.empty() && !m_openings.back().isOurs()) {
        m_openings.pop_back();
    }
}

void DisplayOrder::clear()
{
    m_openings.clear();
    m_last = -1;
}
