// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/StopSignals.h"

#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>
#include <unistd.h>

/// What the waiting thread shares with the object, which may be gone when a signal comes.
struct StopSignals::Shared
{
    std::atomic<bool> isReceived{false};
    std::mutex mutex;
    StopSignals *object = nullptr; ///< protected by the mutex
};

namespace {
sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

int waitForSignal()
{
    const sigset_t signals = stopSignals();
    int signal = 0;
    sigwait(&signals, &signal);
    return signal;
}
} // namespace

std::unique_ptr<StopSignals> StopSignals::install()
{
    std::unique_ptr<StopSignals> installed(new StopSignals);
    const auto run = [shared = installed->m_shared] {
        const int first = waitForSignal();
        shared->isReceived = true;
        {
            const std::lock_guard lock(shared->mutex);
            if (StopSignals *object = shared->object) {
                const auto emitReceived = [object, first] { Q_EMIT object->received(first); };
                QMetaObject::invokeMethod(object, emitReceived, Qt::QueuedConnection);
            }
        }
        _exit(128 + waitForSignal());
    };
    const sigset_t signals = stopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        std::thread(run).detach();
    } catch (const std::system_error &) {
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        return nullptr;
    }
    return installed;
}

StopSignals::StopSignals()
    : m_shared(std::make_shared<Shared>())
{
    m_shared->object = this;
}

StopSignals::~StopSignals()
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->object = nullptr;
}

bool StopSignals::isReceived() const
{
    return m_shared->isReceived;
}
