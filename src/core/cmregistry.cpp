// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/cmregistry.h"

#include "core/base/dbglog.h"
#include "core/changeevent.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <QCoreApplication>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Model");

ChangeNotifier *makeNotifier(CMAbstractWorker::ChangeType type, const CMPath &path,
                             const QObject *receiver)
{
    switch (type) {
    case CMAbstractWorker::ValueChange:
        return new ValueChangeNotifier(path, receiver);
    case CMAbstractWorker::NodeChange:
        return new NodeChangeNotifier(path, receiver);
    case CMAbstractWorker::RowsChange:
        break;
    }
    return new RowsChangeNotifier(path, receiver);
}
} // namespace

CMRegistry &CMRegistry::instance()
{
    // Never destroyed: workers may still be going when the process's statics do.
    static auto *registry = new CMRegistry;
    return *registry;
}

bool CMRegistry::publish(CMNode *node)
{
    NodeSlice &slice = nodeSlice(node->path());
    const std::unique_lock lock(slice.mutex);
    if (slice.nodes.find(node->path()) != nullptr) {
        return false;
    }
    slice.nodes.insert(node);
    // Posted under the lock, so that coming and going are reported in the order in which they were.
    reportNode(node->path(), true);
    return true;
}

void CMRegistry::withdraw(CMNode *node)
{
    NodeSlice &slice = nodeSlice(node->path());
    const std::unique_lock lock(slice.mutex);
    if (slice.nodes.find(node->path()) != node) {
        return;
    }
    slice.nodes.remove(node);
    reportNode(node->path(), false);
}

CMNode::Pointer CMRegistry::find(const CMPath &path) const
{
    const NodeSlice &slice = nodeSlice(path);
    const std::shared_lock lock(slice.mutex);
    return CMNode::Pointer(slice.nodes.find(path));
}

std::vector<CMNode::Pointer> CMRegistry::nodesAt(const CMPath &path) const
{
    std::vector<CMNode::Pointer> found;
    for (const NodeSlice &slice : m_nodes) {
        const std::shared_lock lock(slice.mutex);
        for (CMNode *node : slice.nodes.entries()) {
            if (path.isEmpty() || node->path() == path || node->path().isBelow(path)) {
                found.emplace_back(node);
            }
        }
    }
    return found;
}

void CMRegistry::trace() const
{
    QStringList paths;
    for (const NodeSlice &slice : m_nodes) {
        const std::shared_lock lock(slice.mutex);
        for (const CMNode *node : slice.nodes.entries()) {
            paths.append(node->path().toString());
        }
    }
    paths.sort();
    LOG4CPLUS_INFO(logger, "The model has " << paths.size() << " nodes");
    for (const QString &path : qAsConst(paths)) {
        LOG4CPLUS_INFO(logger, "Node " << path);
    }
}

void CMRegistry::subscribe(CMAbstractWorker::ChangeType type, const CMPath &path, QObject *receiver,
                           const std::function<bool(ChangeNotifier *)> &connectTo)
{
    std::unique_ptr<ChangeNotifier> notifier(makeNotifier(type, path, receiver));
    if (notifier->thread() != receiver->thread()) {
        notifier->moveToThread(receiver->thread());
    }
    if (!connectTo(notifier.get())) {
        return;
    }
    notifier->m_connected = true;
    SubscriptionSlice &slice = subscriptionSlice(type, path);
    const std::lock_guard lock(slice.mutex);
    if (slice.size >= slice.sweepAt) {
        sweep(slice);
    }
    append(slice, notifier.release());
    ++slice.size;
}

void CMRegistry::append(SubscriptionSlice &slice, ChangeNotifier *notifier)
{
    ChangeNotifier *newest = slice.newest.find(notifier->path());
    if (newest == nullptr) {
        notifier->m_next = notifier;
        slice.newest.insert(notifier);
        return;
    }
    notifier->m_next = newest->m_next;
    newest->m_next = notifier;
    slice.newest.replace(newest, notifier);
}

void CMRegistry::removeAfter(SubscriptionSlice &slice, ChangeNotifier *previous)
{
    ChangeNotifier *removed = previous->m_next;
    previous->m_next = removed->m_next;
    if (removed == previous) {
        slice.newest.remove(removed);
    } else if (slice.newest.find(removed->path()) == removed) {
        slice.newest.replace(removed, previous);
    }
}

void CMRegistry::unsubscribe(CMAbstractWorker::ChangeType type, const CMPath &path,
                             const QObject *receiver,
                             const std::function<void(ChangeNotifier *)> &disconnectFrom)
{
    ChangeNotifier *ended = nullptr;
    {
        SubscriptionSlice &slice = subscriptionSlice(type, path);
        const std::lock_guard lock(slice.mutex);
        ChangeNotifier *const newest = slice.newest.find(path);
        for (ChangeNotifier *previous = newest; previous != nullptr;) {
            ChangeNotifier *notifier = previous->m_next;
            // One that ended with its receiver may name the address of another that came later.
            if (notifier->receiver() == receiver && notifier->isConnected()) {
                disconnectFrom(notifier);
                if (!notifier->isConnected()) {
                    ended = notifier;
                    removeAfter(slice, previous);
                    --slice.size;
                    break;
                }
            }
            previous = notifier == newest ? nullptr : notifier;
        }
    }
    if (ended != nullptr) {
        ended->dispose();
    }
}

int CMRegistry::reportRows(const CMPath &path, const QStringList &changes, int first, int count)
{
    return report(CMAbstractWorker::RowsChange, path,
                  [&] { return new RowsChangeEvent(changes, first, count); });
}

int CMRegistry::reportRows(const CMPath &path, const QString &change, int first, int count)
{
    return report(CMAbstractWorker::RowsChange, path,
                  [&] { return new RowsChangeEvent({change}, first, count); });
}

int CMRegistry::reportValue(const CMPath &path, const QVariant &value)
{
    return report(CMAbstractWorker::ValueChange, path, [&] { return new ValueChangeEvent(value); });
}

int CMRegistry::reportNode(const CMPath &path, bool published)
{
    return report(CMAbstractWorker::NodeChange, path,
                  [published] { return new NodeChangeEvent(published); });
}

int CMRegistry::report(CMAbstractWorker::ChangeType type, const CMPath &path,
                       const std::function<ChangeEvent *()> &makeEvent)
{
    SubscriptionSlice &slice = subscriptionSlice(type, path);
    if (slice.size == 0) {
        return 0;
    }
    const std::lock_guard lock(slice.mutex);
    int told = 0;
    ChangeNotifier *const newest = slice.newest.find(path);
    for (ChangeNotifier *previous = newest; previous != nullptr;) {
        ChangeNotifier *notifier = previous->m_next;
        if (notifier->isConnected()) {
            QCoreApplication::postEvent(notifier, makeEvent());
            ++told;
        }
        previous = notifier == newest ? nullptr : notifier;
    }
    return told;
}

void CMRegistry::sweep(SubscriptionSlice &slice)
{
    slice.size = 0;
    for (ChangeNotifier *newest : slice.newest.takeAll()) {
        ChangeNotifier *next = newest->m_next;
        ChangeNotifier *notifier = nullptr;
        while (notifier != newest) {
            notifier = std::exchange(next, next->m_next);
            if (notifier->isConnected()) {
                append(slice, notifier);
                ++slice.size;
            } else {
                notifier->dispose();
            }
        }
    }
    slice.sweepAt = std::max(64, 2 * slice.size.load());
}
