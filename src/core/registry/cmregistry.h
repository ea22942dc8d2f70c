// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/cmendpoint.h"
#include "core/registry/cmpathtable.h"
#include "core/registry/cmtree.h"

#include <array>
#include <shared_mutex>
#include <vector>

/// Knows every published node of the process.
///
/// Called from any thread. The nodes are split into slices by the hash of their path. Each slice
/// has its own mutex, which is held for the look-up only. The returned pointer keeps the node
/// alive.
class CMRegistry
{
public:
    static CMRegistry &instance();

    /// Returns false if another node is published at the path already.
    bool publish(CMEndpoint *node);
    void withdraw(CMEndpoint *node);

    /// The node at the path; null if there is none.
    CMEndpoint::Pointer find(const CMPath &path) const;

    /// What is directly below the path.
    CMTree::Children children(const CMPath &path) { return m_tree.children(path); }

    /// The nodes at the path and below it, in no order. For the empty path, all nodes.
    std::vector<CMEndpoint::Pointer> nodesAt(const CMPath &path);

    /// Writes every published path to the logger "Model" at level INFO.
    void trace();

private:
    struct Slice
    {
        mutable std::shared_mutex mutex;
        CMPathTable<CMEndpoint, &CMEndpoint::m_nextInTable> nodes;
    };

    Slice &sliceOf(const CMPath &path) { return m_slices[path.hash() % m_slices.size()]; }
    const Slice &sliceOf(const CMPath &path) const
    {
        return m_slices[path.hash() % m_slices.size()];
    }

    void addNodesBelow(const CMPath &path, std::vector<CMEndpoint::Pointer> &nodes);

    std::array<Slice, 16> m_slices;

    /// Its mutex may be locked while that of a slice is.
    CMTree m_tree;
};
