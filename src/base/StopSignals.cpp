// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/StopSignals.h"

#include <csignal>
#include <mutex>
#include <poll.h>
#include <sys/signalfd.h>
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

int readSignal(int descriptor)
{
    signalfd_siginfo info = {};
    return read(descriptor, &info, sizeof info) == sizeof info ? int(info.ssi_signo) : 0;
}
} // namespace

std::unique_ptr<StopSignals> StopSignals::install()
{
    const sigset_t signals = stopSignals();
    const int descriptor = signalfd(-1, &signals, SFD_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    std::unique_ptr<StopSignals> installed(new StopSignals);
    const auto run = [descriptor, shared = installed->m_shared] {
        // Noted before it is taken, so that isReceived() finds it pending or noted.
        pollfd readable = {descriptor, POLLIN, 0};
        poll(&readable, 1, -1);
        shared->isReceived = true;
        const int first = readSignal(descriptor);
        {
            const std::lock_guard lock(shared->mutex);
            if (StopSignals *object = shared->object) {
                const auto emitReceived = [object, first] { Q_EMIT object->received(first); };
                QMetaObject::invokeMethod(object, emitReceived, Qt::QueuedConnection);
            }
        }
        _exit(128 + readSignal(descriptor));
    };
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        std::thread(run).detach();
    } catch (const std::system_error &) {
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        close(descriptor);
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
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGINT) == 1 || sigismember(&pending, SIGTERM) == 1 ||
           m_shared->isReceived;
}
