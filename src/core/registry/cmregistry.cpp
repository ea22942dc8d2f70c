// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/registry/cmregistry.h"

#include "core/base/dbglog.h"
#include "core/registry/cmsubscriptions.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Model");
}

CMRegistry &CMRegistry::instance()
{
    // Never destroyed: workers may still be running when the statics of the process are destroyed.
    static auto *registry = new CMRegistry;
    return *registry;
}

bool CMRegistry::publish(CMEndpoint *node)
{
    Slice &slice = sliceOf(node->path());
    const std::unique_lock lock(slice.mutex);
    if (slice.nodes.find(node->path()) != nullptr) {
        return false;
    }
    slice.nodes.insert(node);
    m_tree.add(node);
    // Under the mutex, so that publishing and disposing are reported in order.
    CMSubscriptions::reportNode(node->path(), true);
    return true;
}

void CMRegistry::withdraw(CMEndpoint *node)
{
    Slice &slice = sliceOf(node->path());
    const std::unique_lock lock(slice.mutex);
    if (slice.nodes.find(node->path()) != node) {
        return;
    }
    slice.nodes.remove(node);
    m_tree.remove(node);
    CMSubscriptions::reportNode(node->path(), false);
}

CMEndpoint::Pointer CMRegistry::find(const CMPath &path) const
{
    const Slice &slice = sliceOf(path);
    const std::shared_lock lock(slice.mutex);
    return CMEndpoint::hold(slice.nodes.find(path));
}

std::vector<CMEndpoint::Pointer> CMRegistry::nodesAt(const CMPath &path)
{
    std::vector<CMEndpoint::Pointer> found;
    if (CMEndpoint::Pointer node = find(path)) {
        found.push_back(std::move(node));
    }
    addNodesBelow(path, found);
    return found;
}

void CMRegistry::addNodesBelow(const CMPath &path, std::vector<CMEndpoint::Pointer> &nodes)
{
    CMTree::Children children = m_tree.children(path);
    std::move(children.nodes.begin(), children.nodes.end(), std::back_inserter(nodes));
    for (const CMPath &group : children.groups) {
        addNodesBelow(group, nodes);
    }
}

void CMRegistry::trace()
{
    QStringList paths;
    for (const CMEndpoint::Pointer &node : nodesAt({})) {
        paths.append(node->path().toString());
    }
    paths.sort();
    LOG4CPLUS_INFO(logger, "The model has " << paths.size() << " nodes");
    for (const QString &path : qAsConst(paths)) {
        LOG4CPLUS_INFO(logger, "Node " << path);
    }
}
