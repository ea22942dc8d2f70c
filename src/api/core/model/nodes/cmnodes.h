// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QtGlobal>

#include <functional>

class CMEndpoint;

/// The nodes of a worker, which it owns. Used in the worker's thread.
class TAVO_API_EXPORT CMNodes
{
public:
    CMNodes() = default;

    /// Disposes of every node.
    ~CMNodes();

    Q_DISABLE_COPY_MOVE(CMNodes)

    /// The number of nodes, including those that are not published.
    int size() const { return m_size; }

    /// Calls the function with each node, newest first. The function must not make or dispose of
    /// nodes.
    void forEach(const std::function<void(const CMEndpoint *)> &function) const;

private:
    friend class CMNode;

    void add(CMEndpoint *node);
    void remove(CMEndpoint *node);

    // A list linked through the nodes: removing one costs the same however many there are.
    CMEndpoint *m_first = nullptr;
    int m_size = 0;
};
