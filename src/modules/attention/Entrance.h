// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

/// Where requests come into the worker. The worker handles them in its own thread, in the order in which they
/// came. While none of them waits and the worker is idle, a request may be handled at once, in the thread of
/// its sender: then no thread has to wake up for it. No sender waits for the worker.
///
/// What requests handled at once use is used elsewhere only within hold(). Called from any thread.
class Entrance : public std::enable_shared_from_this<Entrance>
{
public:
    using Hold = std::unique_lock<std::recursive_mutex>;
    using Slot = std::function<void(const CMSetDataRequest &)>;

    /// Handles a request at once, in any thread and within a hold. Returns false, and has done nothing, if it
    /// can't.
    using AtOnce = std::function<bool(const CMSetDataRequest &)>;

    explicit Entrance(QObject *worker)
        : m_worker(worker)
    {
    }

    Hold hold() { return Hold(m_mutex); }

    /// Calls the function within a hold from the event loop of the worker's thread, unless the worker ends
    /// before.
    void post(const std::function<void()> &function);

    /// Makes a node at the path for requests to the slot of the worker, or of an object that it owns.
    template <typename Receiver>
    void bind(CMNodes *nodes, const CMPath &path, Receiver *receiver,
              void (Receiver::*slot)(const CMSetDataRequest &), const AtOnce &atOnce = {})
    {
        bind(
            nodes, path,
            [receiver, slot](const CMSetDataRequest &request) { (receiver->*slot)(request); },
            atOnce);
    }

    /// To be called first when the worker is destroyed. No function is called from then on.
    void close();

private:
    void bind(CMNodes *nodes, const CMPath &path, const Slot &slot, const AtOnce &atOnce);
    void take(const CMSetDataRequest &request, const Slot &slot, const AtOnce &atOnce);

    std::recursive_mutex m_mutex;  ///< held while the worker works
    std::atomic<int> m_waiting{0}; ///< requests for the worker's thread
    std::mutex m_workerMutex;      ///< never held for long
    QObject *m_worker;             ///< null when it ends; changed under both mutexes
};
