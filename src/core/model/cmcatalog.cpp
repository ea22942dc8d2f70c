// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmcatalog.h"

#include "core/registry/cmregistry.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {
CMCatalog::Entry entryOf(const CMEndpoint &node)
{
    return {node.path(), node.kind(), node.title()};
}
} // namespace

QString CMCatalog::groupKind()
{
    return QStringLiteral("group");
}

std::optional<CMCatalog::Entry> CMCatalog::entry(const CMPath &path)
{
    const CMEndpoint::Pointer node = CMRegistry::instance().find(path);
    if (!node) {
        return std::nullopt;
    }
    return entryOf(*node);
}

std::vector<CMCatalog::Entry> CMCatalog::tree(const CMPath &path)
{
    // Sorted by texts that are made only once for each path.
    std::vector<std::pair<QString, Entry>> found;
    for (const CMEndpoint::Pointer &node : CMRegistry::instance().nodesAt(path)) {
        found.emplace_back(node->path().toString(), entryOf(*node));
    }
    std::sort(found.begin(), found.end(),
              [](const auto &one, const auto &other) { return one.first < other.first; });
    std::vector<Entry> entries;
    entries.reserve(found.size());
    for (auto &[text, entry] : found) {
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<CMCatalog::Entry> CMCatalog::children(const CMPath &path)
{
    const CMTree::Children children = CMRegistry::instance().children(path);
    std::map<QString, Entry> found;
    for (const CMEndpoint::Pointer &node : children.nodes) {
        found.emplace(node->path().name(), entryOf(*node));
    }
    for (const CMPath &group : children.groups) {
        // A node may have nodes below it.
        found.emplace(group.name(), Entry{group, groupKind(), {}});
    }
    std::vector<Entry> entries;
    entries.reserve(found.size());
    for (auto &[name, entry] : found) {
        entries.push_back(std::move(entry));
    }
    return entries;
}
