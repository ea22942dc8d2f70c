// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/base/trstring.h"
#include "core/records/cmpath.h"

#include <vector>

/// What there is in the model, for whoever shows or searches it. Any thread; nothing is held up but
/// for moments. What comes and goes meanwhile may or may not be there.
namespace CMCatalog {

/// A published node, or a path that has none but leads to some.
struct Entry
{
    CMPath path;
    QString kind; ///< CMNode::kind(), or groupKind()
    TrString title;
};

/// The kind of a path without a node of its own.
TAVO_API_EXPORT QString groupKind();

/// Every node at the path and below it, in the order of their paths' texts; of the empty path, every
/// node of the process.
TAVO_API_EXPORT std::vector<Entry> tree(const CMPath &path);

/// What is directly below the path, groups included, in the order of their names.
TAVO_API_EXPORT std::vector<Entry> children(const CMPath &path);

} // namespace CMCatalog
