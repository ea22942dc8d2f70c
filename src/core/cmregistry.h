// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/changenotifier.h"
#include "core/model/cmabstractworker.h"
#include "core/cmpathtable.h"
#include "core/model/nodes/cmnode.h"

#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <vector>

class ChangeEvent;

/// Knows every published node and every subscription of the process.
///
/// Any thread. Both tables are split by the path's hash, each slice under a lock of its own, which
/// is held for the look-up and for posting a report: nodes are handed out counted, and no code of
/// others runs under a lock but the callable that disconnects a notifier.
class CMRegistry
{
public:
    static CMRegistry &instance();

    /// False when another node is published at the path already.
    bool publish(CMNode *node);
    void withdraw(CMNode *node);

    /// Writes every published path to the log, logger "Model", level INFO.
    void trace() const;

    /// The node at the path, kept alive by the pointer; null for none.
    CMNode::Pointer find(const CMPath &path) const;

    /// The nodes at the path and below it, of the empty path all, kept alive by the pointers; in no
    /// order.
    std::vector<CMNode::Pointer> nodesAt(const CMPath &path) const;

    void subscribe(CMAbstractWorker::ChangeType type, const CMPath &path, QObject *receiver,
                   const std::function<bool(ChangeNotifier *)> &connectTo);
    void unsubscribe(CMAbstractWorker::ChangeType type, const CMPath &path, const QObject *receiver,
                     const std::function<void(ChangeNotifier *)> &disconnectFrom);

    /// Post a change to everybody subscribed. Return how many.
    int reportRows(const CMPath &path, const QStringList &changes, int first, int count);
    /// One change; makes no list where nobody is subscribed.
    int reportRows(const CMPath &path, const QString &change, int first, int count);
    int reportValue(const CMPath &path, const QVariant &value);

private:
    static constexpr int sliceCount = 16;
    static constexpr int typeCount = 3;

    struct NodeSlice
    {
        mutable std::shared_mutex mutex;
        CMPathTable<CMNode, &CMNode::m_nextInTable> nodes;
    };

    /// The subscriptions to a path are a ring through ChangeNotifier::m_next, oldest first; the
    /// table has the newest, behind which the next one goes.
    struct SubscriptionSlice
    {
        std::mutex mutex;
        CMPathTable<ChangeNotifier, &ChangeNotifier::m_nextInTable> newest;
        std::atomic<int> size{0}; ///< read unlocked: a change that nobody watches costs one load
        int sweepAt = 64;         ///< how many make the slice look for ended ones
    };

    NodeSlice &nodeSlice(const CMPath &path) { return m_nodes[path.hash() % sliceCount]; }
    const NodeSlice &nodeSlice(const CMPath &path) const
    {
        return m_nodes[path.hash() % sliceCount];
    }
    SubscriptionSlice &subscriptionSlice(CMAbstractWorker::ChangeType type, const CMPath &path)
    {
        return m_subscriptions[type][path.hash() % sliceCount];
    }

    int report(CMAbstractWorker::ChangeType type, const CMPath &path,
               const std::function<ChangeEvent *()> &makeEvent);
    int reportNode(const CMPath &path, bool published);
    static void append(SubscriptionSlice &slice, ChangeNotifier *notifier);
    static void removeAfter(SubscriptionSlice &slice, ChangeNotifier *previous);
    static void sweep(SubscriptionSlice &slice);

    std::array<NodeSlice, sliceCount> m_nodes;
    std::array<std::array<SubscriptionSlice, sliceCount>, typeCount> m_subscriptions;
};
