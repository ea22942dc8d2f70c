// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/registry/cmtree.h"

#include <utility>

namespace {
// An entry stores its place in the list, so that it is removed without searching.

template <typename T>
void append(std::vector<T *> &list, T *entry, uint T::*place)
{
    entry->*place = uint(list.size());
    list.push_back(entry);
}

template <typename T>
void removeFrom(std::vector<T *> &list, T *entry, uint T::*place)
{
    T *last = list.back();
    list[entry->*place] = last;
    last->*place = entry->*place;
    list.pop_back();
    constexpr std::size_t minCapacity = 1024;
    if (list.capacity() > minCapacity && list.size() < list.capacity() / 4) {
        list.shrink_to_fit();
    }
}
} // namespace

void CMTree::add(CMEndpoint *node)
{
    const std::lock_guard lock(m_mutex);
    append(parentOf(node->path())->m_nodes, node, &CMEndpoint::m_place);
}

void CMTree::remove(CMEndpoint *node)
{
    const std::lock_guard lock(m_mutex);
    removeFrom(parentOf(node->path())->m_nodes, node, &CMEndpoint::m_place);
}

CMTree::Children CMTree::children(const CMPath &path)
{
    Children found;
    const std::lock_guard lock(m_mutex);
    setLast(&m_top);
    const Group *group = path.isEmpty() ? &m_top : m_groups.find(path);
    if (group == nullptr) {
        return found;
    }
    found.nodes.reserve(group->m_nodes.size());
    for (CMEndpoint *node : group->m_nodes) {
        found.nodes.push_back(CMEndpoint::hold(node));
    }
    found.groups.reserve(group->m_groups.size());
    for (const Group *child : group->m_groups) {
        found.groups.push_back(child->path());
    }
    return found;
}

CMTree::Group *CMTree::parentOf(const CMPath &path)
{
    if (!path.isChildOf(m_last->path())) {
        setLast(groupAt(path.parent()));
    }
    return m_last;
}

CMTree::Group *CMTree::groupAt(const CMPath &path)
{
    if (path.isEmpty()) {
        return &m_top;
    }
    if (Group *group = m_groups.find(path)) {
        return group;
    }
    auto *group = new Group;
    group->m_path = path;
    group->m_parent = groupAt(path.parent());
    append(group->m_parent->m_groups, group, &Group::m_place);
    m_groups.insert(group);
    return group;
}

/// Removes the previous one if it is empty.
void CMTree::setLast(Group *group)
{
    Group *left = std::exchange(m_last, group);
    while (left != group && left->m_parent != nullptr && left->m_nodes.empty() &&
           left->m_groups.empty()) {
        Group *parent = left->m_parent;
        removeFrom(parent->m_groups, left, &Group::m_place);
        m_groups.remove(left);
        delete left;
        left = parent;
    }
}
