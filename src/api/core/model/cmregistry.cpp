// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmregistry.h"

#include "core/model/changeevent.h"
#include "core/tavo/dbglog.h"

#include <algorithm>
#include <memory>

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
    CMNode *&entry = slice.nodes[node->path()];
    if (entry != nullptr) {
        return false;
    }
    entry = node;
    // Posted under the lock, so that coming and going are reported in the order in which they were.
    reportNode(node->path(), true);
    return true;
}

void CMRegistry::withdraw(CMNode *node)
{
    NodeSlice &slice = nodeSlice(node->path());
    const std::unique_lock lock(slice.mutex);
    const auto entry = slice.nodes.constFind(node->path());
    if (entry == slice.nodes.constEnd() || *entry != node) {
        return;
    }
    slice.nodes.erase(entry);
    reportNode(node->path(), false);
}

CMNode::Pointer CMRegistry::find(const CMPath &path) const
{
    const NodeSlice &slice = nodeSlice(path);
    const std::shared_lock lock(slice.mutex);
    return CMNode::Pointer(slice.nodes.value(path));
}

void CMRegistry::trace() const
{
    QStringList paths;
    for (const NodeSlice &slice : m_nodes) {
        const std::shared_lock lock(slice.mutex);
        for (auto entry = slice.nodes.keyBegin(); entry != slice.nodes.keyEnd(); ++entry) {
            paths.append(entry->toString());
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
    ChangeNotifier **end = &slice.subscriptions[path];
    while (*end != nullptr) {
        end = &(*end)->m_next;
    }
    *end = notifier.release();
    ++slice.size;
}

void CMRegistry::unsubscribe(CMAbstractWorker::ChangeType type, const CMPath &path,
                             const QObject *receiver,
                             const std::function<void(ChangeNotifier *)> &disconnectFrom)
{
    ChangeNotifier *ended = nullptr;
    {
        SubscriptionSlice &slice = subscriptionSlice(type, path);
        const std::lock_guard lock(slice.mutex);
        const auto first = slice.subscriptions.find(path);
        if (first == slice.subscriptions.end()) {
            return;
        }
        for (ChangeNotifier **link = &*first; *link != nullptr; link = &(*link)->m_next) {
            // One that ended with its receiver may name the address of another that came later.
            if ((*link)->receiver() != receiver || !(*link)->isConnected()) {
                continue;
            }
            disconnectFrom(*link);
            if (!(*link)->isConnected()) {
                ended = *link;
                *link = ended->m_next;
                --slice.size;
                break;
            }
        }
        if (*first == nullptr) {
            slice.subscriptions.erase(first);
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
    for (ChangeNotifier *notifier = slice.subscriptions.value(path); notifier != nullptr;
         notifier = notifier->m_next) {
        if (notifier->isConnected()) {
            QCoreApplication::postEvent(notifier, makeEvent());
            ++told;
        }
    }
    return told;
}

void CMRegistry::sweep(SubscriptionSlice &slice)
{
    for (auto entry = slice.subscriptions.begin(); entry != slice.subscriptions.end();) {
        for (ChangeNotifier **link = &*entry; *link != nullptr;) {
            if ((*link)->isConnected()) {
                link = &(*link)->m_next;
                continue;
            }
            ChangeNotifier *ended = *link;
            *link = ended->m_next;
            --slice.size;
            ended->dispose();
        }
        entry = *entry == nullptr ? slice.subscriptions.erase(entry) : std::next(entry);
    }
    slice.sweepAt = std::max(64, 2 * slice.size.load());
}
