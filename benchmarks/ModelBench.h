// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QThread>
#include <QVariantHash>

#include <functional>
#include <memory>
#include <vector>

/// The services that the notifications module uses. They hold every request unanswered, so what is
/// queued stays queued. The floor is a node that only answers.
class BenchServices : public CMNodesWorker
{
    Q_OBJECT

public:
    BenchServices();

    static CMPath floorPath();

    /// Drops the held requests, which answers them with an error.
    void drop() { m_held.clear(); }

private:
    void on_held(const CMSetDataRequest &request);
    void on_floor(const CMSetDataRequest &request);

    std::vector<CMSetDataRequest> m_held;
};

/// A notifications worker, loaded from its library, and its services. Lives in the calling thread
/// or in a thread with an event loop.
class BenchModule
{
public:
    enum class Place { ThisThread, OwnThread };

    explicit BenchModule(Place place = Place::ThisThread);
    ~BenchModule();

    Q_DISABLE_COPY_MOVE(BenchModule)

    /// Deletes the worker with everything in it, and creates a new one.
    void restart();

    /// Sends a request and waits for its reply. In the calling thread this runs the event loop.
    CMReply<QVariant> request(const CMPath &path, const TavoValue &value) const;

private:
    void inItsThread(const std::function<void()> &function);

    QThread m_thread;
    QObject m_context; ///< lives in the worker's thread
    std::unique_ptr<BenchServices> m_services;
    QVariantHash m_config;
    std::unique_ptr<CMWorker> m_worker;
};

TavoValue soundRequest(int number);
TavoValue soundCancelRequest(int number);
TavoValue messageRequest(int number);
TavoValue displayCancelRequest(const CMPath &path);

/// The numbers from 0, in the same random order every time.
std::vector<int> shuffled(int count);
