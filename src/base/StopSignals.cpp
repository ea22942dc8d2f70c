// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/StopSignals.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {
std::atomic<bool> s_isReceived{false};

sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

/// Waits for a signal. Others, such as those of children that end, may interrupt that.
int readSignal(int descriptor)
{
    signalfd_siginfo info = {};
    ssize_t size = 0;
    do {
        size = read(descriptor, &info, sizeof info);
    } while (size < 0 && errno == EINTR);
    return size == sizeof info ? int(info.ssi_signo) : 0;
}

void waitForSignals(int signalDescriptor, int eventDescriptor)
{
    // Set before the signal is read, so that isReceived() always finds the signal: pending or in
    // the flag.
    pollfd readable = {signalDescriptor, POLLIN, 0};
    while (poll(&readable, 1, -1) < 0 && errno == EINTR) {
    }
    s_isReceived = true;
    eventfd_write(eventDescriptor, eventfd_t(readSignal(signalDescriptor)));
    _exit(128 + readSignal(signalDescriptor));
}
} // namespace

std::unique_ptr<StopSignals> StopSignals::install()
{
    const sigset_t signals = stopSignals();
    const int signalDescriptor = signalfd(-1, &signals, SFD_CLOEXEC);
    const int eventDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (signalDescriptor < 0 || eventDescriptor < 0) {
        return nullptr;
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        std::thread(waitForSignals, signalDescriptor, eventDescriptor).detach();
    } catch (const std::system_error &) {
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        return nullptr;
    }
    return std::unique_ptr<StopSignals>(new StopSignals(eventDescriptor));
}

StopSignals::StopSignals(int eventDescriptor)
    : m_notifier(eventDescriptor, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &StopSignals::on_notifier_activated);
}

bool StopSignals::isReceived()
{
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGINT) == 1 || sigismember(&pending, SIGTERM) == 1 ||
           s_isReceived;
}

void StopSignals::on_notifier_activated()
{
    eventfd_t signal = 0;
    if (eventfd_read(int(m_notifier.socket()), &signal) == 0) {
        Q_EMIT received(int(signal));
    }
}
