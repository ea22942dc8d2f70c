// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QThread>
#include <QVariantHash>

#include <functional>
#include <memory>
#include <vector>

/// The services that the notifications module meets, holding every request unanswered: what is
/// queued stays queued. One node answers at once and does nothing else: the floor.
class BenchServices : public CMNodesWorker
{
    Q_OBJECT

public:
    BenchServices();

    static CMPath floorPath();

    /// Forgets the held requests, which answers them with an error.
    void drop() { m_held.clear(); }

private:
    void on_held(const CMSetDataRequest &request);
    void on_floor(const CMSetDataRequest &request);

    std::vector<CMSetDataRequest> m_held;
};

/// A notifications worker out of its library with its services, in this thread or in one of its own
/// that runs an event loop.
class BenchModule
{
public:
    enum class Place { ThisThread, OwnThread };

    explicit BenchModule(Place place = Place::ThisThread);
    ~BenchModule();

    Q_DISABLE_COPY_MOVE(BenchModule)

    /// Deletes the worker with all that it holds, and makes a fresh one.
    void restart();

    /// Sends a request and waits for its answer; in this thread by turning the event loop.
    CMReply<QVariant> request(const CMPath &path, const TavoValue &value) const;

private:
    void inItsThread(const std::function<void()> &function);

    QThread m_thread;
    QObject m_context; ///< lives where the worker does
    std::unique_ptr<BenchServices> m_services;
    QVariantHash m_config;
    std::unique_ptr<CMWorker> m_worker;
};

TavoValue soundRequest(int number);
TavoValue soundCancelRequest(int number);
TavoValue messageRequest(int number);
TavoValue displayCancelRequest(const CMPath &path);

/// The numbers from 0 on, in the same random order every time.
std::vector<int> shuffled(int count);
