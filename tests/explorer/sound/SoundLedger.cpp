// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/sound/SoundLedger.h"

#include <algorithm>

namespace {
auto withId(int id)
{
    return [id](const SoundItem &item) { return item.id == id; };
}

template <typename List>
auto findIn(List &list, int id)
{
    return std::find_if(list.begin(), list.end(), withId(id));
}
} // namespace

void SoundLedger::clear()
{
    m_queue.clear();
    m_stopping.clear();
}

void SoundLedger::enqueue(const SoundItem &item)
{
    const auto position =
        std::find_if(m_queue.begin(), m_queue.end(),
                     [&](const SoundItem &queued) { return queued.priority < item.priority; });
    if (position == m_queue.begin() && !m_queue.empty()) {
        for (SoundItem &stopping : m_stopping) {
            stopping.overtaken = true;
        }
    }
    m_queue.insert(position, item);
}

SoundItem *SoundLedger::find(int id)
{
    auto item = findIn(m_queue, id);
    if (item != m_queue.end()) {
        return &*item;
    }
    item = findIn(m_stopping, id);
    return item != m_stopping.end() ? &*item : nullptr;
}

bool SoundLedger::isQueued(int id) const
{
    return findIn(m_queue, id) != m_queue.end();
}

void SoundLedger::remove(int id)
{
    for (auto *list : {&m_queue, &m_stopping}) {
        list->erase(std::remove_if(list->begin(), list->end(), withId(id)), list->end());
    }
}

void SoundLedger::moveToStopping(int id)
{
    const auto item = findIn(m_queue, id);
    item->overtaken = false;
    m_stopping.push_back(*item);
    m_queue.erase(item);
}
