// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <functional>

#include <QtGlobal>

class CMNode;

/// A worker's set of nodes, which owns them. Thread: the worker's.
class TAVO_API_EXPORT CMNodes
{
public:
    CMNodes() = default;

    /// Disposes of every node.
    ~CMNodes();

    Q_DISABLE_COPY_MOVE(CMNodes)

    int size() const { return m_size; }

    /// Newest first. The function must neither make nor dispose of nodes.
    void forEach(const std::function<void(const CMNode *)> &function) const;

private:
    friend class CMNode;

    void add(CMNode *node);
    void remove(CMNode *node);

    // A list through the nodes: taking one out costs the same among any number.
    CMNode *m_first = nullptr;
    int m_size = 0;
};
