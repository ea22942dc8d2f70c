// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/cmendpoint.h"
#include "core/registry/cmpathtable.h"

#include <mutex>
#include <vector>

/// Indexes the published nodes by their parents, for listing them. Does not own the nodes.
///
/// Called from any thread. Adding or removing a node takes constant time; listing takes time in
/// proportion to the number of children.
class CMTree
{
public:
    struct Children
    {
        std::vector<CMEndpoint::Pointer> nodes; ///< in no order
        std::vector<CMPath> groups;             ///< paths with nodes below them, in no order
    };

    void add(CMEndpoint *node);
    void remove(CMEndpoint *node);

    /// The nodes and groups directly below the path.
    Children children(const CMPath &path);

private:
    /// A path with nodes below it. Owned by the tree.
    struct Group
    {
        const CMPath &path() const { return m_path; }

        CMPath m_path;
        Group *m_parent = nullptr; ///< null at the top
        uint m_place = 0;          ///< in the parent's groups
        Group *m_nextInTable = nullptr;
        std::vector<CMEndpoint *> m_nodes;
        std::vector<Group *> m_groups;
    };

    Group *parentOf(const CMPath &path);
    Group *groupAt(const CMPath &path);
    void setLast(Group *group);

    std::mutex m_mutex;
    Group m_top;
    CMPathTable<Group, &Group::m_nextInTable> m_groups; ///< all except the one at the top

    /// The parent of the node that came or went last: usually that of the next one, too. It may be
    /// empty; no other group is. With a look-up for each, opening a notification would take 2.5 % more
    /// instructions (scripts/count-instructions).
    Group *m_last = &m_top;
};
