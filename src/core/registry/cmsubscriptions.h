// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/registry/cmnotifiertable.h"

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

/// All subscriptions of the process to changes of one kind.
///
/// Called from any thread. The subscriptions are split into slices by the hash of their path. Each
/// slice has its own mutex, which is held while a change is posted.
class CMSubscriptions
{
public:
    /// The subscriptions to changes of values, to changes of rows, and to the publishing and
    /// disposing of nodes.
    static CMSubscriptions &toValues();
    static CMSubscriptions &toRows();
    static CMSubscriptions &toNodes();

    /// Post a change to every subscriber of the path. Return the number of subscribers.
    static int reportValue(const CMPath &path, const QVariant &value);
    /// Makes the value only if there is a subscriber. The function is called under the mutex.
    static int reportValue(const CMPath &path, const std::function<QVariant()> &make);
    static int reportRows(const CMPath &path, const QStringList &changes, int first, int count);
    static int reportNode(const CMPath &path, bool published);

    /// Takes a notifier that has been connected to its receiver.
    void add(std::unique_ptr<ChangeNotifier> notifier);

    /// Calls the function with each of the receiver's notifiers at the path, oldest first, until it
    /// has disconnected one, and frees that one. The function is called under the mutex.
    void end(const CMPath &path, const QObject *receiver,
             const std::function<void(ChangeNotifier *)> &disconnectFrom);

private:
    struct Slice
    {
        std::mutex mutex;
        CMNotifierTable notifiers;
        std::atomic<int> size{0}; ///< read without the mutex: most changes have no subscriber
        int sweepAt = 64;         ///< the size at which notifiers without a receiver are freed
    };

    /// Calls the function, which posts to the notifier, for every subscriber of the path.
    int report(const CMPath &path, const std::function<void(ChangeNotifier *)> &post);

    Slice &sliceOf(const CMPath &path) { return m_slices[path.hash() % m_slices.size()]; }
    static void sweep(Slice &slice);

    std::array<Slice, 16> m_slices;
};
