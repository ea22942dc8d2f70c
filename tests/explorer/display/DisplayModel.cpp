// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayModel.h"

#include <algorithm>
#include <array>

int DisplayModel::open(Form form, int priority, int time)
{
    Entry entry{m_opened++, form, priority, time, time};
    if (form == Form::Reference) {
        entry.names = namedNext();
    } else if (form == Form::Message) {
        m_messages.push_back(entry.number);
        m_nodes.push_back(entry.number);
    }
    const auto position = std::find_if(m_queue.begin(), m_queue.end(), [&](const Entry &other) {
        return other.priority < priority;
    });
    if (position != m_queue.begin()) {
        m_queue.insert(position, entry);
        return entry.number;
    }
    if (isDue()) {
        remove(0);
    } else if (isHeadTimed()) {
        m_queue.front().left -= m_elapsed;
    }
    m_queue.insert(m_queue.begin(), entry);
    m_elapsed = 0;
    return entry.number;
}

int DisplayModel::cancel(int path)
{
    int removed = 0;
    bool headRemoved = false;
    for (std::size_t i = m_queue.size(); i-- > 0;) {
        if (m_queue[i].path() == path) {
            remove(i);
            ++removed;
            headRemoved = i == 0;
        }
    }
    if (headRemoved) {
        m_elapsed = 0;
    }
    return removed;
}

void DisplayModel::passTime()
{
    if (isHeadTimed()) {
        m_queue.front().shown += isDue() ? 0 : 1;
        ++m_elapsed;
    }
}

void DisplayModel::expire()
{
    remove(0);
    m_elapsed = 0;
}

int DisplayModel::count(int path) const
{
    return int(std::count_if(m_queue.begin(), m_queue.end(),
                             [path](const Entry &entry) { return entry.path() == path; }));
}

bool DisplayModel::hasNode(int message) const
{
    return std::find(m_nodes.begin(), m_nodes.end(), message) != m_nodes.end();
}

int DisplayModel::namedNext() const
{
    int first = none;
    for (const Entry &entry : m_queue) {
        if (entry.names != none && hasNode(entry.names)) {
            return entry.names;
        }
        if (first == none && entry.form == Form::Message && hasNode(entry.number)) {
            first = entry.number;
        }
    }
    return first;
}

std::string DisplayModel::key() const
{
    static constexpr std::array<char, 3> forms{'m', 's', 'r'};
    const int named = namedNext();
    std::string key = std::to_string(m_elapsed);
    for (const Entry &entry : m_queue) {
        key += ' ';
        key += forms.at(std::size_t(entry.form));
        key += std::to_string(entry.priority) + ':' + std::to_string(entry.left);
        if (entry.form == Form::Message && !hasNode(entry.number)) {
            key += '-'; // its node was disposed of with a namesake
        } else if (entry.names != none && entry.names == named) {
            key += '>';
        } else if (entry.number == named) {
            key += '<';
        }
    }
    return key;
}

void DisplayModel::remove(std::size_t index)
{
    const int named = m_queue[index].names;
    m_nodes.erase(std::remove(m_nodes.begin(), m_nodes.end(), named), m_nodes.end());
    m_queue.erase(m_queue.begin() + std::ptrdiff_t(index));
}
