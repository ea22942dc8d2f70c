// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/base/trstring.h"
#include "core/records/cmpath.h"

#include <optional>
#include <vector>

/// Lists the nodes of the model. Called from any thread. A node that is published or disposed of
/// during a call may or may not be listed.
namespace CMCatalog {

/// A published node, or a group: a path without a node that has nodes below it.
struct Entry
{
    CMPath path;    ///< the node's path
    QString kind;   ///< CMEndpoint::kind(), or groupKind()
    TrString title; ///< for people; empty if the node has none, and for a group
};

/// The kind of a group.
TAVO_API_EXPORT QString groupKind();

/// The node at the path, if there is one. Costs one look-up, however many nodes there are.
TAVO_API_EXPORT std::optional<Entry> entry(const CMPath &path);

/// The nodes at the path and below it, sorted by path. For the empty path, every node of the
/// process.
TAVO_API_EXPORT std::vector<Entry> tree(const CMPath &path);

/// The nodes and groups directly below the path, sorted by name. Other nodes cost no time.
TAVO_API_EXPORT std::vector<Entry> children(const CMPath &path);

} // namespace CMCatalog
