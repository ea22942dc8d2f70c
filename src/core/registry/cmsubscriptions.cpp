// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/registry/cmsubscriptions.h"

#include <algorithm>

// Never destroyed: workers may still be running when the statics of the process are destroyed.
CMSubscriptions &CMSubscriptions::toValues()
{
    static auto *subscriptions = new CMSubscriptions;
    return *subscriptions;
}

CMSubscriptions &CMSubscriptions::toRows()
{
    static auto *subscriptions = new CMSubscriptions;
    return *subscriptions;
}

CMSubscriptions &CMSubscriptions::toNodes()
{
    static auto *subscriptions = new CMSubscriptions;
    return *subscriptions;
}

int CMSubscriptions::reportValue(const CMPath &path, const QVariant &value)
{
    return toValues().report(path, [&value](ChangeNotifier *notifier) {
        static_cast<ValueChangeNotifier *>(notifier)->post(value);
    });
}

int CMSubscriptions::reportValue(const CMPath &path, const std::function<QVariant()> &make)
{
    // Most changes have no subscriber; this saves them two function objects.
    if (toValues().sliceOf(path).size == 0) {
        return 0;
    }
    QVariant value;
    return toValues().report(path, [&](ChangeNotifier *notifier) {
        if (!value.isValid()) {
            value = make();
        }
        static_cast<ValueChangeNotifier *>(notifier)->post(value);
    });
}

int CMSubscriptions::reportRows(const CMPath &path, const QStringList &changes, int first,
                                int count)
{
    return toRows().report(path, [&](ChangeNotifier *notifier) {
        static_cast<RowsChangeNotifier *>(notifier)->post(changes, first, count);
    });
}

int CMSubscriptions::reportNode(const CMPath &path, bool published)
{
    return toNodes().report(path, [published](ChangeNotifier *notifier) {
        static_cast<NodeChangeNotifier *>(notifier)->post(published);
    });
}

int CMSubscriptions::report(const CMPath &path, const std::function<void(ChangeNotifier *)> &post)
{
    Slice &slice = sliceOf(path);
    if (slice.size == 0) {
        return 0;
    }
    const std::lock_guard lock(slice.mutex);
    int told = 0;
    slice.notifiers.forEach(path, [&](ChangeNotifier *notifier) {
        if (notifier->isConnected()) {
            post(notifier);
            ++told;
        }
    });
    return told;
}

void CMSubscriptions::add(std::unique_ptr<ChangeNotifier> notifier)
{
    notifier->m_connected = true;
    Slice &slice = sliceOf(notifier->path());
    const std::lock_guard lock(slice.mutex);
    if (slice.size >= slice.sweepAt) {
        sweep(slice);
    }
    slice.notifiers.append(notifier.release());
    ++slice.size;
}

void CMSubscriptions::end(const CMPath &path, const QObject *receiver,
                          const std::function<void(ChangeNotifier *)> &disconnectFrom)
{
    ChangeNotifier *ended = nullptr;
    {
        Slice &slice = sliceOf(path);
        const std::lock_guard lock(slice.mutex);
        ended = slice.notifiers.takeFirst(path, [&](ChangeNotifier *notifier) {
            // If it is not connected, its receiver is gone, and another object may have the
            // address.
            if (notifier->receiver() != receiver || !notifier->isConnected()) {
                return false;
            }
            disconnectFrom(notifier);
            return !notifier->isConnected();
        });
        if (ended != nullptr) {
            --slice.size;
        }
    }
    if (ended != nullptr) {
        ended->dispose();
    }
}

void CMSubscriptions::sweep(Slice &slice)
{
    slice.size = 0;
    for (ChangeNotifier *notifier : slice.notifiers.takeAll()) {
        if (notifier->isConnected()) {
            slice.notifiers.append(notifier);
            ++slice.size;
        } else {
            notifier->dispose();
        }
    }
    slice.sweepAt = std::max(64, 2 * slice.size.load());
}
